#include "comm/MVComm.h"

#include "comm/ContainerWatch.h"
#include "comm/MVCommLogText.h"
#include "comm/MVCommSocketPath.h"
#include "comm/MVCommunication.h"
#include "platform/base/Directories.h"
#include "platform/base/SystemLog.h"
#include "platform/bus/DistributedNotification.h"
#include "platform/loop/RunLoop.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds additionDelay{100};
constexpr std::chrono::milliseconds announcementDelay{100};
constexpr std::chrono::milliseconds longestPreparation{300};

bool isTooLong(const QString& path) {
    return QFile::encodeName(path).size() > static_cast<qsizetype>(kMVCommLongestSocketPath);
}

} // namespace

MVComm& MVComm::sharedComm() {
    // Never destroyed: plain functions called during the end of the process may still ask for it.
    static MVComm* const shared = new MVComm;
    return *shared;
}

MVComm::MVComm()
    : afterAddition_(*platform::RunLoop::current(), [this] { broadcastDidLaunchNotification(); })
    , announcement_(*platform::RunLoop::current(),
                    [this] { broadcastDidLaunchNotificationDelayed(); })
    , nextEnd_(*platform::RunLoop::current(), [this] { endNextServer(); })
    , endOfPreparation_(*platform::RunLoop::current(), [this] { injectIntoContainers(); }) {
    if (const QString folder = containersFolder(); !folder.isEmpty())
        containerWatch_ = std::make_unique<ContainerWatch>(QFile::encodeName(folder).toStdString(),
                                                           [this] { containersDidChange(); });
    injectIntoContainers();
}

MVComm::~MVComm() = default;

bool MVComm::setupPluginConnectionWithCallBack(MVCommDataCallback callback) {
    dataCallback_ = callback;
    if (!addCommForPath(QFile::decodeName(MVCommMainSocketPath().c_str())))
        return false;
    std::rotate(comms_.begin(), std::prev(comms_.end()), comms_.end());
    return true;
}

bool MVComm::addCommForPath(const QString& path) {
    if (isTooLong(path)) {
        platform::systemLog(platform::LogPriority::error,
                            "Couldn't serve %s: the path has more than %zu bytes",
                            qUtf8Printable(MVCommLogText(path)), kMVCommLongestSocketPath);
        return false;
    }
    auto server = MVCommunication::create(*this, path);
    if (server == nullptr)
        return false;
    comms_.push_back(std::move(server));
    afterAddition_.start(additionDelay);
    return true;
}

void MVComm::socketRecreated() {
    afterAddition_.start(additionDelay);
}

QStringList MVComm::containerLibraries() {
    return containerLibraries(containersFolder());
}

QString MVComm::containersFolder() {
    const std::string library = platform::userLibraryDirectory();
    return library.empty() ? QString()
                           : QFile::decodeName(library.c_str()) + QLatin1String("/Containers");
}

QStringList MVComm::containerLibraries(const QString& containers) {
    if (containers.isEmpty())
        return {};
    QStringList libraries;
    const QDir folder(containers);
    for (const QString& entry :
         folder.entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString data = folder.filePath(entry) + QLatin1String("/Data");
        if (QFileInfo(data).isDir())
            libraries += data;
    }
    return libraries;
}

/// Of several preparations the last one counts, which knows all containers.
void MVComm::containersDidChange() {
    const QStringList paths = containerSockets();
    dropContainersExcept(paths);
    const bool isAnyNew =
        std::ranges::any_of(paths, [this](const QString& path) { return isToBeServed(path); });
    if (!isAnyNew)
        return;
    if (prepareContainers_ == nullptr) {
        injectIntoContainers();
        return;
    }
    if (!endOfPreparation_.isActive())
        endOfPreparation_.start(longestPreparation);
    preparation_ = std::make_shared<MVComm*>(this);
    prepareContainers_([awaited = std::weak_ptr(preparation_)] {
        if (const auto self = awaited.lock())
            (*self)->injectIntoContainers();
    });
}

void MVComm::injectIntoContainers() {
    preparation_.reset();
    endOfPreparation_.stop();
    const QStringList paths = containerSockets();
    dropContainersExcept(paths);
    for (const QString& path : paths) {
        if (isToBeServed(path))
            (addCommForPath(path) ? containerPaths_ : refusedPaths_).insert(path);
    }
}

bool MVComm::isToBeServed(const QString& containerPath) const {
    const auto isHopeless = [&] {
        return isTooLong(containerPath) || QFileInfo(containerPath).isDir();
    };
    return !containerPaths_.contains(containerPath) &&
           !(refusedPaths_.contains(containerPath) && isHopeless());
}

/// If several paths lead to one folder, only the one that is already served counts: another server
/// would take the socket away from the first.
QStringList MVComm::containerSockets() const {
    QMap<QString, QString> pathOfFolder;
    for (const QString& library : containerLibraries()) {
        const QFileInfo folder(library);
        const QString path = library + QLatin1Char('/') + QLatin1String(kMVCommSocketName);
        const QString real = folder.canonicalFilePath();
        if (folder.isWritable() && (!pathOfFolder.contains(real) || containerPaths_.contains(path)))
            pathOfFolder.insert(real, path);
    }
    return pathOfFolder.values();
}

/// The server of a container that was replaced by one of the same name goes too: the new one has to
/// be prepared.
void MVComm::dropContainersExcept(const QStringList& paths) {
    const QSet<QString> wanted(paths.begin(), paths.end());
    refusedPaths_.intersect(wanted);
    std::erase_if(comms_, [&](const auto& server) {
        const QString& path = server->socketPath();
        if (!containerPaths_.contains(path) ||
            (wanted.contains(path) && !server->isFolderReplaced()))
            return false;
        containerPaths_.remove(path);
        server->stopRecreating();
        ending_.push_back({server, server->connectionProcesses()});
        return true;
    });
    if (!ending_.empty())
        nextEnd_.start({});
}

/// One in a turn: the file of a socket may go only now, and some disks take their time for that.
void MVComm::endNextServer() {
    const Ending ending = std::move(ending_.front());
    ending_.pop_front();
    if (!ending_.empty())
        nextEnd_.start({});
    ending.server->shutdown();
    for (const MVCommConnectionProcess& process : ending.processes) {
        const MVCommActivityMessage silence{kMVCommActivity, process.pid, 0.0F};
        dataCallback_(&silence);
    }
    if (!ending.processes.isEmpty() && disconnectionCallback_ != nullptr)
        disconnectionCallback_();
}

void MVComm::sendMessage(const MVCommConsoleMessage* message) {
    for (const auto& server : comms_)
        server->sendMessage(message);
}

void MVComm::setAllowFrequentMessages(bool allow) {
    for (const auto& server : comms_)
        server->setAllowFrequentMessages(allow);
}

void MVComm::suppressMessages(bool suppress) {
    for (const auto& server : comms_)
        server->suppressMessages(suppress);
}

QList<MVCommConnectionProcess> MVComm::connectionProcesses() const {
    QList<MVCommConnectionProcess> processes;
    for (const auto& server : comms_)
        processes += server->connectionProcesses();
    return processes;
}

bool MVComm::isAnybodyConnected() const {
    return std::ranges::any_of(comms_,
                               [](const auto& server) { return server->isAnybodyConnected(); });
}

void MVComm::broadcastDidLaunchNotification() {
    announcement_.start(announcementDelay);
}

void MVComm::broadcastDidLaunchNotificationDelayed() {
    platform::postDistributedNotification(QStringLiteral("com.quarnel.mivo.guiDidLaunch"));
}

void MVComm::shutdown() {
    afterAddition_.stop();
    announcement_.stop();
    containerWatch_.reset();
    preparation_.reset();
    endOfPreparation_.stop();
    containerPaths_.clear();
    nextEnd_.stop();
    ending_.clear();
    for (const auto& server : comms_)
        server->shutdown();
    comms_.clear();
}
