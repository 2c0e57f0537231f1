#include "app/PluginCare.h"

#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "platform/files/Bundle.h"
#include "platform/files/Directories.h"
#include "platform/processes/DetachedProgram.h"
#include "platform/processes/SystemLog.h"
#include "platform/text/Localization.h"
#include "ui/VolumeWindow.h"

#include <QStringList>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

using platform::formatted;
using platform::localized;
using Problem = PluginWatch::Problem;

namespace {

/// Has a look at what goes to the system log while it lives.
class LogListener final : public platform::SystemLogSink {
  public:
    void line(platform::LogPriority priority, std::string_view text) noexcept override {
        const std::lock_guard lock(mutex_);
        lines_.emplace_back(priority, text);
    }

    std::vector<std::pair<platform::LogPriority, std::string>> take() {
        const std::lock_guard lock(mutex_);
        return std::exchange(lines_, {});
    }

  private:
    std::mutex mutex_;
    std::vector<std::pair<platform::LogPriority, std::string>> lines_; // guarded by mutex_
};

/// Empty without a place for it.
QString messagesFile() {
    const std::string folder = platform::logsDirectory();
    return folder.empty() ? QString() : QString::fromStdString(folder + "/Tonvale/Plugin.log");
}

QString programFile() {
    return QString::fromStdString(platform::Bundle::main().plugIns() /
                                  "Tonvale.plugin/Contents/Linux/Tonvale");
}

ProblemBar::Content contentFor(Problem problem) {
    const QString start = localized(QStringLiteral("Start Plug-in"));
    const QString details = localized(QStringLiteral("Details…"));
    switch (problem) {
    case Problem::none:
        break;
    case Problem::noSocket:
        return {localized(QStringLiteral("No volume can be set: the audio plug-in has no way to "
                                         "connect to this window.")),
                localized(QStringLiteral("Try Again")), details};
    case Problem::absent:
        return {localized(QStringLiteral("The audio plug-in isn't running. What you set is "
                                         "remembered, but not heard yet.")),
                start, details};
    case Problem::starting:
        return {localized(QStringLiteral("The audio plug-in is being started…"))};
    case Problem::notStarted:
        return {localized(QStringLiteral("The audio plug-in was asked to start, but didn't come.")),
                start, details};
    case Problem::silent:
        return {localized(QStringLiteral("The audio plug-in is running, but can't reach the sound "
                                         "server or this window. What you set is not heard.")),
                {},
                details};
    }
    return {};
}

} // namespace

PluginCare::PluginCare(platform::RunLoop& loop, Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , starter_({[this](auto answer) { service_.ask(std::move(answer)); },
                [this](auto answer) { service_.start(std::move(answer)); },
                &platform::startDetached},
               programFile(), messagesFile())
    , watch_(loop, {[this] { return !surroundings_.comm.connectionProcesses().isEmpty(); },
                    [this] { return name_.isOwned(); }, [this] { return serveSocket(); }, starter_,
                    [this](Problem problem) { show(problem); }})
    , service_(QString::fromLatin1(PluginStarter::serviceName), platform::sessionBus())
    , name_(QStringLiteral("com.quarnel.Tonvale.Plugin"), [this] { watch_.changed(); }) {
    QObject::connect(&surroundings_.window, &VolumeWindow::helpWanted, &guard_,
                     [this] { watch_.help(); });
    QObject::connect(&surroundings_.window, &VolumeWindow::detailsWanted, &guard_,
                     [this] { tellDetails(); });
    watch_.begin();
}

/// The reasons for a failure go to the system log; the person has them from here.
bool PluginCare::serveSocket() {
    std::vector<std::pair<platform::LogPriority, std::string>> lines;
    bool isServed = false;
    {
        LogListener listener;
        isServed = surroundings_.serveSocket();
        lines = listener.take();
    }
    QStringList errors;
    for (const auto& [priority, line] : lines) {
        platform::systemLog(priority, "%s", line.c_str());
        errors += QString::fromStdString(line);
    }
    socketErrors_ = errors.join(QLatin1Char('\n'));
    return isServed;
}

void PluginCare::show(Problem problem) {
    surroundings_.window.showProblem(contentFor(problem));
}

void PluginCare::tellDetails() {
    const QString title = localized(QStringLiteral("The audio plug-in"));
    if (watch_.problem() == Problem::noSocket) {
        surroundings_.tell(
            title, formatted(localized(QStringLiteral("Socket: %@")), MVCommMainSocketPath()) +
                       QLatin1Char('\n') + socketErrors_);
        return;
    }
    starter_.describe([this, title](const QString& text) { surroundings_.tell(title, text); });
}
