#include "app/PluginProblems.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "install/MVInstallerController.h"
#include "platform/base/Directories.h"
#include "platform/base/Mutex.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/SessionBus.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/desktop/LoginItems.h"
#include "platform/processes/DetachedProgram.h"
#include "platform/processes/ProcessInfo.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"
#include "ui/VolumeWindow.h"

#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using platform::formatted;
using Problem = PluginHealth::Problem;

namespace {

struct LogLine {
    platform::LogPriority priority;
    std::string text;
    std::thread::id thread;
};

/// Keeps what goes to the system log while it lives.
class LogListener final : public platform::SystemLogSink {
  public:
    ~LogListener() override { end(); }

    void line(platform::LogPriority priority, std::string_view text) noexcept override {
        const platform::ScopedLock lock(mutex_);
        lines_.push_back({priority, std::string(text), std::this_thread::get_id()});
    }

    std::vector<LogLine> take() {
        end();
        return std::exchange(lines_, {});
    }

  private:
    platform::Mutex mutex_;
    std::vector<LogLine> lines_; // guarded by mutex_ until end()
};

/// Empty without a place for it.
QString messagesFile() {
    const std::string folder = platform::logsDirectory();
    return folder.empty() ? QString() : QString::fromStdString(folder + "/Tonvale/Plugin.log");
}

constexpr const char* programName = "TonvalePlugin";

QString programFile() {
    return MVInstallerController::installedPluginPath() + QLatin1String("/Contents/Linux/") +
           QLatin1String(programName);
}

/// False, after a line in the log, if that fails.
bool setLoginItem(bool exists) {
    const QString bundle = MVInstallerController::installedPluginPath();
    platform::LoginItems items(platform::LoginItems::usualFolders(), programFile());
    const bool isDone =
        exists ? items.addToLoginItems(bundle)
               : !items.loginItemExists({}, bundle) || items.removeFromLoginItems(bundle, {});
    if (!isDone)
        QNLog(qnlog_error, exists ? "The plug-in can't be started with the session"
                                  : "The plug-in's login item can't be removed");
    return isDone;
}

bool isInstalled() {
    return QFileInfo(programFile()).isExecutable();
}

bool isRunning() {
    const std::string program = programFile().toStdString();
    return std::ranges::any_of(platform::processesOf(::geteuid()),
                               [&](pid_t process) { return platform::runsFile(process, program); });
}

/// Whether one runs whose file has been replaced: the installer moves the old one within its folder
/// before it deletes it.
bool isOutdated() {
    const std::string program = programFile().toStdString();
    const std::filesystem::path bundle = MVInstallerController::installedPluginPath().toStdString();
    const std::string folder = bundle.parent_path().string() + '/';
    return std::ranges::any_of(platform::processesOf(::geteuid()), [&](pid_t process) {
        const auto path = platform::executablePath(process);
        return path && path->starts_with(folder) &&
               std::filesystem::path(*path).filename() == programName &&
               !platform::runsFile(process, program);
    });
}

ProblemBar::Content contentFor(Problem problem) {
    const QString start = Texts::tr("Start Plug-in");
    const QString details = Texts::tr("Details…");
    switch (problem) {
    case Problem::none:
        break;
    case Problem::noSocket:
        return {Texts::tr("Volumes can't be set: the audio plug-in can't connect to "
                          "Tonvale."),
                Texts::tr("Try Again"), details};
    case Problem::absent:
        return {Texts::tr("The audio plug-in isn't running. Your changes are saved "
                          "and take effect when it starts."),
                start, details};
    case Problem::starting:
        return {Texts::tr("The audio plug-in is being started…")};
    case Problem::notStarted:
        return {Texts::tr("The audio plug-in was started, but it isn't responding."), start,
                details};
    case Problem::silent:
        return {Texts::tr("The audio plug-in is running, but can't reach the sound "
                          "server or Tonvale. Your changes have no effect yet."),
                {},
                details};
    }
    return {};
}

} // namespace

PluginProblems::PluginProblems(platform::RunLoop& loop, Dependencies dependencies)
    : dependencies_(std::move(dependencies))
    , starter_({[this](auto answer) { askService(std::move(answer)); },
                [this](auto answer) { service_.start(std::move(answer)); },
                &platform::startDetached},
               programFile(), messagesFile())
    , installed_({[this](auto answer) { askService(std::move(answer)); },
                  [this](const QString& unitFile, auto answer) {
                      service_.enable(unitFile, std::move(answer));
                  },
                  [this](auto answer) { service_.reload(std::move(answer)); },
                  [this](auto answer) { service_.remove(std::move(answer)); }, &setLoginItem,
                  &isInstalled, &isRunning,
                  [] { MVInstallerController::killProcess(QLatin1String(programName)); },
                  [this] { starter_.start([] {}); }},
                 MVInstallerController::installedPluginPath(), platform::UserDefaults::standard())
    , watch_(loop, {[this] { return dependencies_.comm.isAnybodyConnected(); },
                    [this] { return name_.isOwned(); }, [this] { return serveSocket(); }, starter_,
                    [this](Problem problem) { show(problem); }})
    , service_(QString::fromLatin1(PluginStarter::serviceName), platform::sessionBus())
    , name_(platform::sessionBus(), QStringLiteral("com.quarnel.Tonvale.Plugin"),
            [this](const QString&) { watch_.changed(); }) {
    watch_.begin();
}

void PluginProblems::showIn(VolumeWindow& window) {
    window_ = &window;
    QObject::connect(&window, &VolumeWindow::helpWanted, &guard_, [this] { watch_.help(); });
    QObject::connect(&window, &VolumeWindow::detailsWanted, &guard_, [this] { tellDetails(); });
    show(watch_.problem());
}

/// The reasons for a failure go to the system log, once as long as they are the same; the user has
/// them from here. Other threads may log something else meanwhile.
bool PluginProblems::serveSocket() {
    LogListener listener;
    const bool isServed = dependencies_.serveSocket();
    const std::vector<LogLine> lines = listener.take();
    QStringList errors;
    for (const LogLine& line : lines) {
        if (line.thread == std::this_thread::get_id())
            errors += QString::fromStdString(line.text);
    }
    const QString before = std::exchange(socketErrors_, errors.join(QLatin1Char('\n')));
    for (const LogLine& line : lines) {
        if (line.thread != std::this_thread::get_id() || socketErrors_ != before)
            platform::systemLog(line.priority, "%s", line.text.c_str());
    }
    return isServed;
}

/// The service of this session belongs to the library of the build.
void PluginProblems::askService(std::function<void(const platform::UserService::State&)> answer) {
    if (MVInstallerController::usesBuiltInLibrary())
        service_.ask(std::move(answer));
    else
        answer({});
}

void PluginProblems::runInstalledPlugin(bool isReplaced) {
    if (MVInstallerController::usesBuiltInLibrary())
        installed_.run(isReplaced || isOutdated());
}

void PluginProblems::removeInstalledPlugin() {
    if (MVInstallerController::usesBuiltInLibrary())
        installed_.remove();
}

void PluginProblems::show(Problem problem) {
    if (window_ != nullptr)
        window_->showProblem(contentFor(problem));
}

void PluginProblems::tellDetails() {
    const QString title = Texts::tr("The audio plug-in");
    if (watch_.problem() == Problem::noSocket) {
        dependencies_.tell(title, formatted(Texts::tr("Socket: %@"), MVCommMainSocketPath()) +
                                      QLatin1Char('\n') + socketErrors_);
        return;
    }
    starter_.describe([this, title](const QString& text) { dependencies_.tell(title, text); });
}
