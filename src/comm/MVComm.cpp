#include "comm/MVComm.h"

#include "comm/MVCommSocketPath.h"
#include "comm/MVCommunication.h"
#include "platform/DistributedNotification.h"
#include "platform/RunLoop.h"

#include <QFile>
#include <QString>

namespace {

constexpr std::chrono::milliseconds additionDelay{100};
constexpr std::chrono::milliseconds announcementDelay{100};

} // namespace

MVComm& MVComm::sharedComm() {
    // Never destroyed: plain functions called during the end of the process may still ask for it.
    static MVComm* const shared = new MVComm;
    return *shared;
}

MVComm::MVComm()
    : afterAddition_(*platform::RunLoop::current(), [this] { broadcastDidLaunchNotification(); })
    , announcement_(*platform::RunLoop::current(),
                    [this] { broadcastDidLaunchNotificationDelayed(); }) {}

MVComm::~MVComm() = default;

bool MVComm::setupPluginConnectionWithCallBack(MVCommDataCallback callback) {
    dataCallback_ = callback;
    return addCommForPath(QFile::decodeName(MVCommMainSocketPath().c_str()));
}

bool MVComm::addCommForPath(const QString& path) {
    auto server = MVCommunication::create(*this, path);
    if (server == nullptr)
        return false;
    comms_.push_back(std::move(server));
    afterAddition_.start(additionDelay);
    return true;
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

void MVComm::broadcastDidLaunchNotification() {
    announcement_.start(announcementDelay);
}

void MVComm::broadcastDidLaunchNotificationDelayed() {
    platform::postDistributedNotification(QStringLiteral("com.quarnel.mivo.guiDidLaunch"));
}

void MVComm::shutdown() {
    afterAddition_.stop();
    announcement_.stop();
    for (const auto& server : comms_)
        server->shutdown();
    comms_.clear();
}
