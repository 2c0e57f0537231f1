#include "framework/application/PlatformApplication.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNGUIApplication.h"

#include "platform/ExceptionReport.h"
#include "platform/MainQueue.h"
#include "platform/RunLoop.h"
#include "platform/RunLoopNotifier.h"

#include <QApplication>

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

} // namespace

int PlatformApplication::main(int argc, char** argv, const Interface& makeInterface) {
    GuardedApplication toolkit(argc, argv);
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);

    const std::unique_ptr<QNGUIApplication> delegate = makeInterface();
    if (!delegate)
        return 0;
    platform::guarded(kExceptionInInterface, [&] { delegate->awakeFromNib(); });
    delegate->launch();
    if (!delegate->shouldExit())
        QApplication::exec();
    delegate->end();
    return 0;
}
