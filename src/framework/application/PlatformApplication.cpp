#include "framework/application/PlatformApplication.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNGUIApplication.h"
#include "framework/application/SignalTable.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/RunLoopNotifier.h"
#include "platform/processes/ExceptionReport.h"
#include "platform/processes/SystemLog.h"

#include <QApplication>
#include <QTimer>

#include <cstdlib>

namespace {

/// Qt's, which does not bear exceptions in its event loop, with a net around each event.
class GuardedApplication final : public QApplication {
  public:
    using QApplication::QApplication;

    bool notify(QObject* receiver, QEvent* event) override {
        try {
            return QApplication::notify(receiver, event);
        } catch (...) {
            platform::reportCurrentException(kExceptionInEventHandler);
            return false;
        }
    }
};

/// No display, say: one line and a status instead of an abort. For the toolkit's start only.
void endOnFatal(QtMsgType type, const QMessageLogContext&, const QString& message) {
    platform::systemLog(platform::LogPriority::error, "%s", qUtf8Printable(message));
    if (type == QtFatalMsg)
        std::_Exit(1);
}

} // namespace

int PlatformApplication::main(int argc, char** argv, const Interface& makeInterface) {
    const auto formerHandler = qInstallMessageHandler(&endOnFatal);
    GuardedApplication toolkit(argc, argv);
    qInstallMessageHandler(formerHandler);
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);

    const std::unique_ptr<QNGUIApplication> delegate = makeInterface();
    if (!delegate)
        return 0;
    platform::guarded(kExceptionInInterface, [&] { delegate->awakeFromNib(); });
    // From within the event loop, so that whatever runs one of its own meanwhile can be ended.
    QTimer::singleShot(0, &toolkit, [&] { delegate->launch(); });
    QApplication::exec();
    SignalTable::instance().silence();
    delegate->end();
    return 0;
}
