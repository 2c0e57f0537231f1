#include "framework/application/PlatformApplication.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/QNGUIApplication.h"
#include "framework/application/QtStartMessages.h"
#include "framework/application/SignalTable.h"

#include "platform/base/ExceptionReport.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"

#include <QApplication>
#include <QEvent>
#include <QSessionManager>
#include <QTimer>

#include <functional>
#include <optional>

namespace {

/// Qt's, which does not bear exceptions in its event loop, with a net around each event.
class GuardedApplication final : public QApplication {
  public:
    using QApplication::QApplication;

    /// Called before the windows are closed because the program is told to quit, by whomever.
    std::function<void()> quits = [] {};

    bool event(QEvent* event) override {
        if (event->type() == QEvent::Quit)
            quits();
        return QApplication::event(event);
    }

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
    std::optional<QtStartMessages> start(std::in_place, argc, argv);
    GuardedApplication toolkit(argc, argv);
    start.reset();
    platform::RunLoop loop;
    const platform::RunLoopNotifier notifier(loop);
    const platform::MainQueueService mainQueue(loop);

    const std::unique_ptr<QNGUIApplication> delegate = makeInterface();
    if (!delegate)
        return 0;
    toolkit.quits = [&] { delegate->setShouldExit(); };
    QObject::connect(
        &toolkit, &QGuiApplication::commitDataRequest, delegate.get(),
        [&] { delegate->applicationShouldSave(); }, Qt::DirectConnection);
    platform::guarded(kExceptionInInterface, [&] { delegate->awakeFromNib(); });
    // From within the event loop, so that nested event loops can be ended.
    QTimer::singleShot(0, &toolkit, [&] { delegate->launch(); });
    QApplication::exec();
    toolkit.quits = [] {};
    SignalTable::instance().silence();
    delegate->end();
    return 0;
}
