#include "Harness.h"
#include "WireScene.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "framework/application/QNApplication.h"
#include "platform/base/DescriptorLimit.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/VolumeModel.h"
#include "ui/VolumeWindow.h"

#include <QCoreApplication>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <stdexcept>
#include <vector>

// Programs that leave together, as when their plug-in is started anew, from the end of their
// connections to the window without their items.
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// The window with its model, and as many plug-ins that have checked in. Times are CPU time in ms.
class Stage {
  public:
    explicit Stage(std::size_t programs) : programs_(programs) {
        platform::raiseDescriptorLimit();
        application_.setLogHandle(log_.release());
        if (!model_.serve())
            throw std::runtime_error("the socket cannot be served");
        model_.comm.setAppConnectCallback(nullptr);
        window_.show();
        draw();
        for (std::size_t i = 0; i < programs; ++i) {
            plugins_.emplace_back(MVCommMainSocketPath())
                .checkIn(bench::firstPid + static_cast<std::uint32_t>(i),
                         QStringLiteral("Music Player %1").arg(i).toStdString());
            loop_.turn();
        }
        turnUntil([&] { return MVCommCopyConnectedProcesses(model_.comm).size() == size(); });
    }

    /// Two merges, of which the first one finds them new.
    double merge() {
        const double time = milliseconds([&] {
            model_.controller.updateConnections();
            model_.controller.updateConnections();
        });
        draw();
        if (model_.controller.apps().size() != size())
            throw std::runtime_error("not every program has a record");
        return time;
    }

    /// From the end of all connections, which is the plug-ins' work, to the empty window.
    double leave() {
        plugins_.clear();
        return milliseconds([&] {
            turnUntil([&] { return model_.controller.apps().isEmpty(); });
            draw();
        });
    }

  private:
    static double milliseconds(const std::function<void()>& work) {
        return bench::cpuOf(work) / 1e6;
    }
    static void draw() {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    qsizetype size() const { return static_cast<qsizetype>(programs_); }

    void turnUntil(const std::function<bool()>& holds) {
        const auto end = Clock::now() + 60s;
        while (!holds()) {
            loop_.turn();
            if (Clock::now() > end)
                throw std::runtime_error("not all programs have come or gone");
        }
    }

    const std::size_t programs_;
    const support::PrivateFolder folder_;
    const support::ScopedVariable home_{"HOME", folder_.path() / "home"};
    const support::ScopedVariable sockets_{"TONVALE_SOCKET_DIR", folder_.path()};
    bench::Log log_;
    QNApplication application_; // which logs as the program does
    platform::RunLoop loop_;
    support::VolumeModel model_{folder_.path() / "preferences.plist"};
    VolumeWindow window_{{model_.controller, {}, [] { return false; }, {}}};
    std::vector<support::ScriptedPlugin> plugins_;
};

struct Times {
    double merge = std::numeric_limits<double>::max();
    double leave = std::numeric_limits<double>::max();
};

void measure(std::size_t programs, Times& least) {
    Stage stage(programs);
    least.merge = std::min(least.merge, stage.merge());
    least.leave = std::min(least.leave, stage.leave());
}

/// How often a quotient measures either side, of which the least counts: it doubles what other
/// programs do to a figure.
constexpr int times = 5;

double leaveAtOnce() {
    Stage stage(1000);
    stage.merge();
    return stage.leave();
}

double leaveRatio() {
    Times least;
    for (int i = 0; i < times; ++i)
        measure(1000, least);
    return least.leave / least.merge;
}

double leaveGrowth() {
    Times few;
    Times many;
    for (int i = 0; i < times; ++i) {
        measure(500, few);
        measure(1000, many);
    }
    return many.leave / few.leave;
}

bool add(const char* name, const char* metric, const char* unit, double (*ours)()) {
    return bench::addFigure({.name = name,
                             .metric = metric,
                             .unit = unit,
                             .ours = ours,
                             .peerName = {},
                             .peer = {},
                             .rounds = 3});
}

[[maybe_unused]] const bool added[] = {
    add("model/leave/1000", "CPU for 1000 programs that leave the window at once", "ms",
        &leaveAtOnce),
    add("model/leave/ratio", "the same, by merging 1000 new ones twice in that window", "times",
        &leaveRatio),
    add("model/leave/growth", "1000 that leave at once, by 500", "times", &leaveGrowth),
};

} // namespace
