#pragma once

#include "comm/MVCommCallbacks.h"
#include "comm/MVCommConnectionProcess.h"
#include "platform/loop/Timer.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class ContainerWatch;
class MVCommunication;

/// The one object through which the rest of the application talks to the plug-ins. It owns the
/// socket servers, keeps the callbacks that they call, passes every command and setting to all of
/// them, and notifies waiting plug-ins that the application is running. Main thread only.
///
/// Programs that see only their container find a socket there: each "Data" folder of an entry of
/// ~/Library/Containers has one, from the beginning or as soon as it appears. Messages that arrive
/// before the callbacks are set are dropped.
///
/// Order of calls: setupPluginConnectionWithCallBack(), then, before the run loop's next turn, set
/// the connection and disconnection callbacks, and at the end shutdown().
class MVComm final : public MVCommCallbacks {
  public:
    /// The process's façade, created on first use and never destroyed.
    static MVComm& sharedComm();

    /// Uses the thread's run loop, which must outlive it. Serves the existing containers, and
    /// watches for new ones.
    MVComm();
    ~MVComm() override;
    MVComm(const MVComm&) = delete;
    MVComm& operator=(const MVComm&) = delete;

    /// Stores the data callback, which must not be null, and serves the main socket
    /// (MVCommSocketPath.h). False when that socket cannot be served; the reason is in the system
    /// log.
    [[nodiscard]] bool setupPluginConnectionWithCallBack(MVCommDataCallback callback);

    /// Serves one more socket and, 0.2 s after the last addition of a burst, announces the launch.
    /// False, with nothing added, when the socket cannot be served.
    [[nodiscard]] bool addCommForPath(const QString& path);

    /// The "Data" folders of the user's containers, those with a link as an entry included; empty
    /// when they cannot be listed. Any thread, as long as none changes the environment.
    static QStringList containerLibraries();

    /// The same for the containers in a folder. Any thread.
    static QStringList containerLibraries(const QString& containers);

    /// The folder of the user's containers, which need not exist; empty for a user without a home.
    static QString containersFolder();

    /// Serves every writable container, and ends the servers of those that no longer exist. Called
    /// whenever the containers have changed and been prepared. A container whose socket could not
    /// be served is tried again then, unless it would fail for the same reason.
    void injectIntoContainers();

    using ContainerPreparation = std::function<void(std::function<void()> ready)>;

    /// Calls `prepare` when there are new containers, before they are served: they are served when
    /// `ready` is called, or after 0.3 s at the latest. `ready` may be called on the main thread
    /// from within `prepare` or at any later time, even after the façade has been destroyed. Null,
    /// the default: they are served at once.
    void setContainerPreparation(ContainerPreparation prepare) {
        prepareContainers_ = std::move(prepare);
    }

    /// Called 50 ms after the last check-in of a burst, but no later than 0.5 s after the first
    /// one; null for none.
    void setAppConnectCallback(MVCommCallback callback) noexcept { connectionCallback_ = callback; }

    /// Called after each disconnection; null for none.
    void setAppDisconnectCallback(MVCommCallback callback) noexcept {
        disconnectionCallback_ = callback;
    }

    MVCommDataCallback dataCallback() const override { return dataCallback_; }
    MVCommCallback connectionCallback() const override { return connectionCallback_; }
    MVCommCallback disconnectionCallback() const override { return disconnectionCallback_; }
    void socketRecreated() override;

    /// These call the function of the same name of every server, in order; see MVCommunication.
    void sendMessage(const MVCommConsoleMessage* message);
    void setAllowFrequentMessages(bool allow);
    void suppressMessages(bool suppress);

    /// The processes of all servers, server by server.
    [[nodiscard]] QList<MVCommConnectionProcess> connectionProcesses() const;

    [[nodiscard]] bool isAnybodyConnected() const;

    /// Posts "com.quarnel.mivo.guiDidLaunch" to the plug-ins after 0.1 s, once even if called
    /// several times in between.
    void broadcastDidLaunchNotification();

    /// Ends every server, removes the socket files and drops a pending announcement. Containers
    /// that appear later are not served.
    void shutdown();

  private:
    void broadcastDidLaunchNotificationDelayed();
    void containersDidChange();
    QStringList containerSockets() const;
    bool isToBeServed(const QString& containerPath) const;
    void dropContainersExcept(const QStringList& paths);
    void endNextServer();

    /// A server that has been dropped, and the processes of its plug-ins.
    struct Ending {
        std::shared_ptr<MVCommunication> server;
        QList<MVCommConnectionProcess> processes;
    };

    std::vector<std::shared_ptr<MVCommunication>> comms_; // the main one, then the containers'
    QSet<QString> containerPaths_; // of those in comms_ that are a container's
    QSet<QString> refusedPaths_;   // of containers' sockets that could not be served
    std::deque<Ending> ending_;
    MVCommDataCallback dataCallback_ = [](const MVCommActivityMessage*) {};
    MVCommCallback connectionCallback_ = nullptr;
    MVCommCallback disconnectionCallback_ = nullptr;
    platform::Timer afterAddition_;
    platform::Timer announcement_;
    platform::Timer nextEnd_;
    ContainerPreparation prepareContainers_;
    std::shared_ptr<MVComm*> preparation_; // the pending one, or null
    platform::Timer endOfPreparation_;
    std::unique_ptr<ContainerWatch> containerWatch_; // null without a home
};
