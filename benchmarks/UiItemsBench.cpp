#include "Harness.h"

#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/VolumeModel.h"
#include "ui/VolumeWindow.h"
#include "ui/items/MVCollectionView.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <vector>

// The window with many items, drawn by software into memory.
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint32_t items = 500;

double millisecondsFor(const std::function<void()>& work) {
    const auto begin = Clock::now();
    work();
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

/// Counts how often a widget is drawn.
class Drawings final : public QObject {
  public:
    explicit Drawings(QWidget& widget) { widget.installEventFilter(this); }
    int count() const noexcept { return count_; }

  private:
    bool eventFilter(QObject* /*widget*/, QEvent* event) override {
        count_ += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }
    int count_ = 0;
};

class Window {
  public:
    Window() {
        window_.resize(600, 560);
        window_.show();
        draw();
    }

    void fill() {
        QList<RunningApplication> running;
        for (std::uint32_t i = 0; i < items; ++i)
            running.append({i + 1, QStringLiteral("Music Player %1").arg(i), {}});
        model_.workspace.setRunningApplications(running);
        draw();
    }

    /// Milliseconds for a frame, of which each shows another piece of the grid.
    double scroll() {
        QScrollBar& bar = *window_.findChild<QScrollArea*>()->verticalScrollBar();
        constexpr int frames = 400;
        constexpr int step = 23;
        std::vector<double> times;
        const Drawings drawings(*window_.findChild<MVCollectionView*>());
        for (int frame = 1; frame <= frames; ++frame)
            times.push_back(millisecondsFor([&] {
                bar.setValue(frame * step);
                draw();
            }));
        if (bar.value() != frames * step || drawings.count() < frames)
            throw std::runtime_error("not every frame has been drawn");
        std::ranges::nth_element(times, times.begin() + frames / 2);
        return times[frames / 2];
    }

  private:
    static void draw() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }

    platform::RunLoop loop_;
    support::VolumeModel model_;
    VolumeWindow window_{{model_.controller, {}, [] { return false; }, {}}};
};

double showItems() {
    Window window;
    return millisecondsFor([&] { window.fill(); });
}

double scrollItems() {
    Window window;
    window.fill();
    return window.scroll();
}

[[maybe_unused]] const bool added[] = {
    bench::addFigure({.name = "ui/scroll",
                      .metric = "a frame while scrolling through 500 items, median",
                      .unit = "ms",
                      .ours = &scrollItems,
                      .peerName = {},
                      .peer = {},
                      .rounds = 5}),
    bench::addFigure({.name = "ui/items/500",
                      .metric = "from 500 new programs to their picture",
                      .unit = "ms",
                      .ours = &showItems,
                      .peerName = {},
                      .peer = {},
                      .rounds = 5}),
};

} // namespace
