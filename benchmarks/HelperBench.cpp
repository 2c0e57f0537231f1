#include "Harness.h"

#include "support/ChildProcess.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/TestEnvironment.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

// The icon in the tray, while nothing happens.
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using support::ChildProcess;

constexpr auto settling = 3s;

void serveUntil(const std::function<bool()>& condition, const char* what) {
    const auto end = std::chrono::steady_clock::now() + support::patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error(what);
        QCoreApplication::processEvents();
        std::this_thread::sleep_for(1ms);
    }
}

/// The number after "key:" in a file of lines below /proc.
std::uint64_t readNumber(const fs::path& file, const std::string& key) {
    std::ifstream stream(file);
    for (std::string word; stream >> word;) {
        std::uint64_t number = 0;
        if (word == key + ":" && stream >> number)
            return number;
    }
    throw std::runtime_error(file.string() + " does not tell " + key);
}

std::uint64_t voluntarySwitches(const ChildProcess& program) {
    std::uint64_t count = 0;
    for (const auto& thread :
         fs::directory_iterator("/proc/" + std::to_string(program.pid()) + "/task"))
        count += readNumber(thread.path() / "status", "voluntary_ctxt_switches");
    return count;
}

/// A watcher with a host, which shows one icon.
class Watcher final : public QDBusVirtualObject {
  public:
    explicit Watcher(const std::string& address)
        : bus_(QDBusConnection::connectToBus(QString::fromStdString(address),
                                             QStringLiteral("watcher"))) {
        bus_.registerVirtualObject(QStringLiteral("/StatusNotifierWatcher"), this);
        bus_.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    ~Watcher() override { QDBusConnection::disconnectFromBus(QStringLiteral("watcher")); }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        hasIcon |= call.member() == QLatin1String("RegisterStatusNotifierItem");
        bus.send(call.member() == QLatin1String("Get")
                     ? call.createReply(QVariant::fromValue(QDBusVariant(true)))
                     : call.createReply());
        return true;
    }

    bool hasIcon = false;

  private:
    QDBusConnection bus_;
};

/// A session bus, and folders of its own.
struct Session {
    Session() {
        fs::create_directory(library);
        support::linkInstalledPlugin(library);
    }

    const support::PrivateFolder folder;
    const fs::path library = folder.path() / "library";
    const support::ScopedVariable variables[6] = {
        {"TONVALE_LOCAL_LIBRARY", library}, {"XDG_RUNTIME_DIR", folder.path()},
        {"XDG_CONFIG_HOME", folder.path()}, {"XDG_STATE_HOME", folder.path()},
        {"XDG_DATA_HOME", folder.path()},   {"TONVALE_SOCKET_DIR", folder.path()}};
    const support::PrivateBus bus;
};

/// Beside the application, with a host that shows the icon, and nothing that plays.
double idleSwitches() {
    constexpr auto duration = 20s;
    const Session session;
    Watcher watcher(session.bus.address());
    const ChildProcess application({TONVALE_PROGRAM});
    const ChildProcess helper({TONVALE_HELPER});
    serveUntil([&] { return watcher.hasIcon; }, "the helper does not register its icon");
    std::this_thread::sleep_for(settling);
    const std::uint64_t before = voluntarySwitches(helper);
    std::this_thread::sleep_for(duration);
    return static_cast<double>(voluntarySwitches(helper) - before);
}

/// The libraries of Qt, in copies that no other program loads, such as this one: what a program
/// shares with others counts for it in part only.
class OwnLibraries {
  public:
    OwnLibraries() {
        const ChildProcess user({TONVALE_BARE_BUS_PROGRAM});
        std::this_thread::sleep_for(settling);
        std::ifstream maps("/proc/" + std::to_string(user.pid()) + "/maps");
        std::set<std::string> paths;
        for (std::string word; maps >> word;) {
            if (word.find("/libQt6") != std::string::npos ||
                word.find("/libicu") != std::string::npos)
                paths.insert(word);
        }
        for (const std::string& path : paths) {
            const std::string name = fs::path(path).filename();
            // "libQt6Core.so.6" of "libQt6Core.so.6.4.2"
            const std::size_t version = name.find(".so.") + 4;
            fs::copy_file(path, folder_.path() / name.substr(0, name.find('.', version)));
        }
        if (paths.empty())
            throw std::runtime_error("the libraries of Qt are not found");
    }

    ChildProcess::Options options() const {
        return {.environment = {{"LD_LIBRARY_PATH", folder_.path()}}};
    }

  private:
    const support::PrivateFolder folder_;
};

/// MiB.
double memoryOf(const std::string& program) {
    constexpr double kibibytes = 1024;
    const Session session;
    const OwnLibraries libraries;
    const ChildProcess process({program}, libraries.options());
    std::this_thread::sleep_for(settling);
    const fs::path file = "/proc/" + std::to_string(process.pid()) + "/smaps_rollup";
    return static_cast<double>(readNumber(file, "Pss")) / kibibytes;
}

[[maybe_unused]] const bool added[] = {
    bench::addFigure({.name = "helper/idle",
                      .metric = "voluntary context switches of all threads in 20 s, icon shown",
                      .unit = "switches",
                      .ours = &idleSwitches,
                      .peerName = {},
                      .peer = {},
                      .rounds = 3}),
    bench::addFigure({.name = "helper/memory",
                      .metric = "proportional set size, no other program with the same Qt",
                      .unit = "MiB",
                      .ours = [] { return memoryOf(TONVALE_HELPER); },
                      .peerName = "bare program with QtCore and QtDBus",
                      .peer = [] { return memoryOf(TONVALE_BARE_BUS_PROGRAM); },
                      .rounds = 5}),
};

} // namespace
