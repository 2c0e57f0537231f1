#include "comm/MVComm.h"
#include "comm/MVCommSocketPath.h"
#include "platform/Bundle.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"
#include "platform/SystemLog.h"
#include "platform/TerminationSignals.h"
#include "ui/VolumeWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QPixmap>

#include <exception>

namespace {

VolumeWindow* volumeWindow = nullptr;

void handleActivity(const MVCommActivityMessage* message) {
    volumeWindow->handleActivity(message->pid, message->level);
}

void updateConnections() {
    volumeWindow->updateConnections();
}

struct Options {
    QString screenshotFile; ///< empty: none
};

Options parseOptions(const QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QCoreApplication::translate("main", "Sets the volume of each program separately."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption screenshot(
        QStringLiteral("screenshot"),
        QCoreApplication::translate("main", "Save a picture of the window to FILE at the end."),
        QStringLiteral("FILE"));
    parser.addOption(screenshot);
    parser.process(application);
    return {parser.value(screenshot)};
}

void connectPlugins(MVComm& comm, VolumeWindow& window) {
    comm.setAppConnectCallback(&updateConnections);
    comm.setAppDisconnectCallback(&updateConnections);
    if (comm.setupPluginConnectionWithCallBack(&handleActivity))
        return;
    window.showProblem(QCoreApplication::translate(
                           "main", "No audio plug-in can connect, since the socket “%1” can't be "
                                   "used. The system log says why.")
                           .arg(QString::fromStdString(MVCommMainSocketPath())));
}

void saveScreenshot(VolumeWindow& window, const QString& file) {
    if (!window.grab().save(file, "PNG"))
        platform::systemLog(platform::LogPriority::error, "Couldn't save the screenshot to %s",
                            qUtf8Printable(file));
}

int run(int& argc, char** argv) {
    QApplication application(argc, argv);
    QGuiApplication::setDesktopFileName(QStringLiteral("com.quarnel.Tonvale"));
    QCoreApplication::setApplicationName(QStringLiteral("Tonvale"));
    QCoreApplication::setApplicationVersion(
        QString::fromStdString(platform::Bundle::main().version()));
    const Options options = parseOptions(application);

    platform::RunLoop runLoop;
    const platform::RunLoopNotifier notifier(runLoop);
    const platform::TerminationSignals signals(runLoop, [](int) { QCoreApplication::quit(); });

    MVComm& comm = MVComm::sharedComm();
    VolumeWindow window(comm);
    volumeWindow = &window;
    connectPlugins(comm, window);
    window.show();

    const int status = QApplication::exec();
    if (!options.screenshotFile.isEmpty())
        saveScreenshot(window, options.screenshotFile);
    comm.shutdown();
    return status;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception& exception) {
        platform::systemLog(platform::LogPriority::error, "Tonvale can't run: %s",
                            exception.what());
        return 1;
    }
}
