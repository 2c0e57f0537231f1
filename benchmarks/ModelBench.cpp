#include "Harness.h"
#include "WireScene.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "model/AppVolumeController.h"
#include "model/AppVolumeView.h"
#include "model/MVCommAppValue.h"
#include "model/MVIgnoredApps.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "workspace/Workspace.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <limits>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using bench::cpuOf;
using Clock = std::chrono::steady_clock;

/// Programs without icons, which take an application with windows.
class BareWorkspace final : public Workspace {
  public:
    QList<RunningApplication> running;

    std::optional<QList<RunningApplication>> runningApplications() const override {
        return running;
    }
    void lookAgain() override {}
    QIcon iconForProgram(const ProgramReference& /*program*/) const override { return {}; }
    QIcon iconForApplication(const QString& /*name*/) const override { return {}; }
    QString whyNamed(const ProgramReference& /*program*/) const override { return {}; }
    void setTileColors(const TileColors& /*colors*/) override {}
    QIcon genericApplicationIcon() const override { return {}; }
};

class EmptyView final : public AppVolumeView {
  public:
    void appsWillChange() override {}
    void appsDidChange(const QList<MVCommAppValue*>& /*apps*/) override {}
    void handleActivity(qsizetype /*index*/, qint64 /*level100*/, float /*level*/) override {}
    void itemDidChange(qsizetype /*index*/) override {}
    double itemHeight() const override { return 40; }
    double titleBarHeight() const override { return 20; }
    void setSizeLimits(const QSizeF& /*minimum*/, const QSizeF& /*maximum*/) override {}
    QRect frame() const override { return {}; }
    void setFrame(const QRect& /*frame*/) override {}
};

/// A home and a socket of its own, with containers.
class Places {
  public:
    explicit Places(int containers = 0) {
        for (int i = 0; i < containers; ++i)
            fs::create_directories(container(i));
    }

    fs::path container(int number) const {
        return folder_.path() / "home/Library/Containers" / std::to_string(number) / "Data";
    }
    fs::path preferences() const { return folder_.path() / "preferences.plist"; }

  private:
    const support::PrivateFolder folder_;
    const support::ScopedVariable home_{"HOME", folder_.path() / "home"};
    const support::ScopedVariable sockets_{"TONVALE_SOCKET_DIR", folder_.path()};
};

/// The controller with an empty view, on the run loop of its thread.
struct Model {
    explicit Model(const Places& places) : defaults(places.preferences()) {
        controller.setView(&view);
    }
    ~Model() { controller.setView(nullptr); }
    Model(const Model&) = delete;
    Model& operator=(const Model&) = delete;

    BareWorkspace workspace;
    MVComm comm;
    platform::UserDefaults defaults;
    MVIgnoredApps ignoredApps{defaults};
    EmptyView view;
    /// Nothing is copied.
    AppVolumeController controller{{comm, ignoredApps, workspace, defaults, {}}};
};

/// Shuffled, so that there is something to sort.
QString nameOf(std::size_t program) {
    constexpr std::size_t step = 7919;
    return QStringLiteral("Music Player %1").arg(program * step % 10007);
}

/// What `count` programs have sent, by plug-ins that are connected and have checked in.
std::vector<support::ScriptedPlugin> checkIn(platform::RunLoop& loop, const MVComm& comm,
                                             std::size_t count) {
    std::vector<support::ScriptedPlugin> plugins;
    for (std::size_t i = 0; i < count; ++i) {
        plugins.emplace_back(MVCommMainSocketPath())
            .checkIn(bench::firstPid + static_cast<std::uint32_t>(i), nameOf(i).toStdString());
        loop.turn();
    }
    const auto end = Clock::now() + 10s;
    while (MVCommCopyConnectedProcesses(comm).size() < static_cast<qsizetype>(count)) {
        loop.turn();
        if (Clock::now() > end)
            throw std::runtime_error("not all programs have checked in");
    }
    return plugins;
}

void serve(MVComm& comm) {
    if (!comm.setupPluginConnectionWithCallBack([](const MVCommActivityMessage*) {}))
        throw std::runtime_error("the socket cannot be served");
}

/// CPU time, in ns, for one program in two merges: all of them are new in the first one.
double mergeEach(std::size_t programs) {
    constexpr std::size_t work = 10000; // programs merged in all
    const Places places;
    platform::RunLoop loop;
    MVComm comm;
    serve(comm);
    const auto plugins = checkIn(loop, comm, programs);
    BareWorkspace workspace;
    platform::UserDefaults defaults(places.preferences());
    MVIgnoredApps ignoredApps(defaults);
    EmptyView view;
    double time = 0;
    for (std::size_t done = 0; done < work; done += programs) {
        AppVolumeController controller({comm, ignoredApps, workspace, defaults, {}});
        controller.setView(&view);
        time += cpuOf([&] {
            controller.updateConnections();
            controller.updateConnections();
        });
        if (controller.apps().size() != static_cast<qsizetype>(programs))
            throw std::runtime_error("not every program has a record");
        controller.setView(nullptr);
    }
    return time / work;
}

/// Of the least of several, since a quotient doubles what other programs do to a figure.
double mergeGrowth() {
    constexpr int times = 3;
    double few = std::numeric_limits<double>::max();
    double many = few;
    for (int i = 0; i < times; ++i) {
        few = std::min(few, mergeEach(100));
        many = std::min(many, mergeEach(1000));
    }
    return many / few;
}

/// Counts what comes like the bare loop's callback, and hands it on.
class IntoModel : public bench::Told {
  public:
    using Told::Told;

    MVCommDataCallback dataCallback() const override { return &handOn; }

    static inline AppVolumeController* controller = nullptr;

  private:
    static void handOn(const MVCommActivityMessage* message) {
        controller->handleActivity(message);
        take(message);
    }
};

constexpr std::size_t items = 200;

/// What a record is told by a level that is not its own.
class Changes {
  public:
    explicit Changes(const AppVolumeController& controller) {
        for (MVCommAppValue* const app : controller.apps())
            QObject::connect(app, &MVCommAppValue::activityChanged, &context_,
                             [this] { ++count_; });
    }
    std::size_t count() const noexcept { return count_; }

  private:
    QObject context_;
    std::size_t count_ = 0;
};

void makeItems(Model& model) {
    for (std::size_t i = 0; i < items; ++i)
        model.workspace.running.append(
            {bench::firstPid + static_cast<std::uint32_t>(i), nameOf(i), {}});
    model.controller.update();
    IntoModel::controller = &model.controller;
}

double activity() {
    const Places places;
    bench::Scene<bench::Ours, IntoModel> scene;
    Model model(places);
    makeItems(model);
    return scene.stream(items);
}

double bareActivity() {
    return bench::Scene<bench::Bare>().stream(items);
}

/// Every message changes a record.
std::shared_ptr<void> checkActivity() {
    const Places places;
    bench::Scene<bench::Ours, IntoModel> scene;
    Model model(places);
    makeItems(model);
    const Changes changes(model.controller);
    scene.stream(items);
    if (changes.count() < bench::Told::messages)
        throw std::runtime_error("a level has not come to its record");
    return nullptr;
}

void awaitVolume(std::vector<support::ScriptedPlugin>& plugins, std::int32_t percent) {
    for (support::ScriptedPlugin& plugin : plugins) {
        const bool has = plugin.awaitCommand();
        const auto commands = plugin.takeCommands();
        if (!has || commands.size() != 1 || commands[0].type != kMVCommSetVolume ||
            commands[0].value != percent)
            throw std::runtime_error("a plug-in did not get the command");
    }
}

/// Milliseconds from a slider's move to the last plug-in's bytes, while the preferences are saved
/// and copied. Of a drag with 125 moves a second.
double slider() {
    constexpr int containers = 10;
    constexpr int moves = 300;
    constexpr auto interval = 8ms;
    const Places places(containers);
    platform::RunLoop loop;
    BareWorkspace workspace;
    MVComm comm;
    platform::UserDefaults defaults(places.preferences());
    MVIgnoredApps ignoredApps(defaults);
    defaults.set("LastLaunchPath", "/opt/Tonvale.app");
    defaults.synchronize();
    AppVolumeController controller({comm, ignoredApps, workspace, defaults, places.preferences()});
    serve(comm);
    auto plugins = checkIn(loop, comm, 1);
    for (int i = 0; i < containers; ++i)
        plugins.emplace_back(places.container(i) / kMVCommSocketName);
    for (int i = 0; i < 10 * containers; ++i)
        loop.turn();
    controller.update();
    MVCommAppValue& app = *controller.apps().at(0);
    std::vector<double> times;
    auto next = Clock::now();
    for (int i = 0; i < moves; ++i) {
        const int percent = i % 100;
        const auto begin = Clock::now();
        app.setVolume((percent + 0.5) / 100);
        controller.sliderChanged(app);
        awaitVolume(plugins, percent);
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
        loop.turn();
        std::this_thread::sleep_until(next += interval);
    }
    controller.sliderReleased(app, app.volume());
    controller.shutdown();
    if (!fs::exists(places.container(0) / places.preferences().filename()))
        throw std::runtime_error("the preferences have not been copied");
    std::ranges::sort(times);
    return times[times.size() * 99 / 100];
}

bool addAll() {
    bench::addFigure({.name = "model/merge/1000",
                      .metric = "merging 1000 programs, for each, by that with 100",
                      .unit = "times",
                      .ours = &mergeGrowth,
                      .peerName = {},
                      .peer = {},
                      .rounds = 3});
    bench::addFigure({.name = "model/activity",
                      .metric = "CPU for a level from the socket to its record",
                      .unit = "ns",
                      .ours = &activity,
                      .peerName = "bare epoll loop",
                      .peer = &bareActivity,
                      .surroundings = &checkActivity});
    return bench::addFigure({.name = "model/slider/p99",
                             .metric = "from a slider's move to the bytes for ten containers",
                             .unit = "ms",
                             .ours = &slider,
                             .peerName = {},
                             .peer = {},
                             .rounds = 5});
}

[[maybe_unused]] const bool added = addAll();

} // namespace
