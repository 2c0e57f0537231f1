#pragma once

#include <QSocketNotifier>

namespace platform {

class RunLoop;

/// Lets Qt's event loop serve a RunLoop: one notifier on the loop's descriptor, whatever the number
/// of sockets and timers behind it. Works in every loop that Qt runs, menus, drags and modal
/// dialogs included. Create it on the loop's thread, after the application object.
class RunLoopNotifier {
  public:
    explicit RunLoopNotifier(RunLoop& loop);

  private:
    QSocketNotifier notifier_;
};

} // namespace platform
