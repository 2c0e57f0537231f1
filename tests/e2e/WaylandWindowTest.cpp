#include "e2e/DesktopFixture.h"

#include "support/AccessibleObject.h"

#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QRegularExpression>
#include <QScreen>

#include <algorithm>
#include <chrono>

using support::ChildProcess;
using support::waitUntil;

// The window on Wayland.
namespace {

/// A compositor that draws into memory and has neither mouse nor keyboard, unless it is given
/// other options.
class WaylandWindowTest : public DesktopFixture {
  protected:
    explicit WaylandWindowTest(
        const std::vector<std::string>& options = {"--backend=headless-backend.so", "--no-config"})
        : compositor_(commandWith(options)) {
        EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(socket_); }))
            << compositor_.output();
    }

    static std::vector<std::string> commandWith(const std::vector<std::string>& options) {
        std::vector<std::string> command{"weston", "--socket=tonvale-0", "--idle-time=0"};
        command.insert(command.end(), options.begin(), options.end());
        return command;
    }

    void open(const Variables& more = {}) {
        // Qt would load Mesa to learn whether it can decorate windows, which leaks.
        Variables environment{{"QT_QPA_PLATFORM", "wayland"},
                              {"QT_WAYLAND_DISABLE_WINDOWDECORATION", "1"},
                              {"WAYLAND_DISPLAY", "tonvale-0"}};
        environment.insert(environment.end(), more.begin(), more.end());
        startTonvale(environment);
    }

    bool becomes(const QSize& size) const {
        return waitUntil([&] {
            const auto window = tool_.window("Tonvale");
            return window && window->size() == size;
        });
    }

    bool isDrawnWith(const QSize& size) {
        quitTonvale();
        const QImage image(QString::fromStdString(picture_));
        EXPECT_EQ(image.size(), size);
        return !image.isNull() && image.size() == size;
    }

    const support::AssistiveTool tool_{session_};
    const std::filesystem::path socket_ =
        std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / "tonvale-0";
    ChildProcess compositor_;
};

/// A compositor in a window of the X display, whose mouse is its own. It shows nothing but the
/// window of the application, on black. Its window leaves a part of the display free, so that the
/// mouse can leave it.
class WaylandPointerTest : public WaylandWindowTest {
  protected:
    WaylandPointerTest()
        : WaylandWindowTest({"--backend=x11-backend.so", "--use-pixman", "--width=1200",
                             "--height=760", "--config=" + configuration()}) {}

    static std::string configuration() {
        std::string file = std::filesystem::path(std::getenv("TMPDIR")) / "weston.ini";
        std::ofstream(file) << "[shell]\nbackground-color=0xff000000\npanel-position=none\n"
                               "animation=none\nstartup-animation=none\nclose-animation=none\n"
                               "focus-animation=none\nlocking=false\n";
        return file;
    }

    /// Where the window is on the screen; a pointer of some pixels does not count.
    static QRect frame() {
        constexpr int pointerSize = 48;
        const QImage screen =
            QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(
                QImage::Format_RGB32);
        std::vector<int> inColumn(static_cast<std::size_t>(screen.width()));
        std::vector<int> inRow(static_cast<std::size_t>(screen.height()));
        for (int y = 0; y < screen.height(); ++y) {
            for (int x = 0; x < screen.width(); ++x) {
                const int isDrawn = qGray(screen.pixel(x, y)) > 8 ? 1 : 0;
                inColumn[static_cast<std::size_t>(x)] += isDrawn;
                inRow[static_cast<std::size_t>(y)] += isDrawn;
            }
        }
        const auto range = [](const std::vector<int>& counts) {
            const auto isWindow = [](int count) { return count > pointerSize; };
            const auto first = std::find_if(counts.begin(), counts.end(), isWindow);
            const auto last = std::find_if(counts.rbegin(), counts.rend(), isWindow);
            return std::pair(static_cast<int>(first - counts.begin()),
                             static_cast<int>(counts.rend() - last));
        };
        const auto [left, right] = range(inColumn);
        const auto [top, bottom] = range(inRow);
        return {left, top, right - left, bottom - top};
    }

    /// The compositor may have a last word.
    static bool settlesAt(const QSize& size) {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::milliseconds rest{500};
        auto last = Clock::now(); // when it had another size
        return waitUntil([&] {
            if (frame().size() != size)
                last = Clock::now();
            return Clock::now() - last > rest;
        });
    }

    /// The program prints what it and the compositor tell each other.
    void openTraced() { open({{"WAYLAND_DEBUG", "1"}}); }

    /// Whether such a message, as "wl_pointer.enter", is in the trace after its first `from` bytes.
    bool isTraced(const QString& message, std::size_t from) const {
        const QRegularExpression line("\\b" + QString(message).replace(".", "[@#]\\d+\\.") + "\\(");
        return QString::fromStdString(tonvale_->outputFrom(from)).contains(line);
    }

    static void hand(const std::vector<std::string>& steps) {
        std::vector<std::string> command{"xdotool"};
        command.insert(command.end(), steps.begin(), steps.end());
        const auto result = support::runCommand(command);
        EXPECT_EQ(result.status, 0) << result.output;
    }

    static void moveThrough(const QPoint& first, const QPoint& last) {
        hand({"mousemove", std::to_string(first.x()), std::to_string(first.y()), "mousemove",
              std::to_string(last.x()), std::to_string(last.y())});
    }

    /// Presses the button over the edge; true when the program has asked for a resize. The
    /// compositor learns where the mouse is when it comes over the compositor's window, and only
    /// adds up its moves from then on. So the mouse comes in anew each time: where the compositor
    /// has missed the first one, it takes the mouse for somewhere else.
    bool takeHold(const QPoint& edge) const {
        constexpr QPoint outside(1270, 790);
        const std::size_t before = tonvale_->outputSize();
        const bool isOver = waitUntil([&] {
            moveThrough(outside, edge);
            return isTraced("wl_pointer.(enter|motion)", before);
        });
        hand({"mousedown", "1"});
        return isOver && waitUntil([&] { return isTraced("xdg_toplevel.resize", before); });
    }

    /// Releases the button; true when the compositor has ended the resize, so that the program
    /// gets the mouse again.
    bool release() const {
        const std::size_t before = tonvale_->outputSize();
        hand({"mouseup", "1"});
        return waitUntil([&] { return isTraced("wl_pointer.enter", before); });
    }

    /// For a failure: what each side has heard of the mouse.
    std::string state() const {
        const QStringList lines = QString::fromStdString(tonvale_->output()).split('\n');
        return lines.filter(QRegularExpression("wl_seat|wl_pointer|xdg_toplevel"))
                   .join('\n')
                   .toStdString() +
               "\nheight: " + std::to_string(frame().height()) +
               "\nmouse: " + support::runCommand({"xdotool", "getmouselocation"}).output +
               support::runCommand({"xwininfo", "-root", "-tree"}).output + compositor_.output();
    }
};

} // namespace

TEST_F(WaylandWindowTest, OnlyItsSizeIsRememberedAndIsOfWholeRows) {
    rememberFrame({30, 40, 640, titleBar + 3 * rowHeight + 7});
    open();
    EXPECT_TRUE(becomes({640, titleBar + 3 * rowHeight}));
    EXPECT_TRUE(isDrawnWith({640, titleBar + 3 * rowHeight}));
    EXPECT_EQ(rememberedFrame(), "30 40 640 " + std::to_string(titleBar + 3 * rowHeight))
        << "the place is that of another desktop";
    open();
    EXPECT_TRUE(isDrawnWith({640, titleBar + 3 * rowHeight}));
}

TEST_F(WaylandPointerTest, APullAtItsEdgeEndsOnWholeRows) {
    const auto height = [](int rows) { return titleBar + rows * rowHeight; };
    rememberFrame({0, 0, 500, height(3)});
    openTraced();
    ASSERT_TRUE(waitUntil([&] { return frame().size() == QSize(500, height(3)); })) << state();
    int rows = 3;
    struct Pull {
        int way;
        int more; // rows
    };
    for (const Pull& pull : {Pull{40, 1}, {-40, -1}, {20, 0}, {90, 1}}) {
        const QRect before = frame();
        const QPoint edge(before.center().x(), before.bottom() - 1);
        ASSERT_TRUE(takeHold(edge)) << state();
        ASSERT_TRUE(waitUntil([&] { // what is moved before the compositor begins has no effect
            moveThrough(edge + QPoint(0, pull.way - 1), edge + QPoint(0, pull.way));
            return frame().height() == before.height() + pull.way;
        })) << state();
        ASSERT_TRUE(release()) << state();
        rows += pull.more;
        ASSERT_TRUE(settlesAt({500, height(rows)})) << state();
    }
    quitTonvale();
    EXPECT_EQ(rememberedFrame(), "0 0 500 " + std::to_string(height(rows)));
}
