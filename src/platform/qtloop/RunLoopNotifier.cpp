#include "platform/qtloop/RunLoopNotifier.h"

#include "platform/loop/RunLoop.h"

namespace platform {

RunLoopNotifier::RunLoopNotifier(RunLoop& loop)
    : notifier_(loop.descriptor(), QSocketNotifier::Read) {
    QObject::connect(&notifier_, &QSocketNotifier::activated, &notifier_, [&loop] { loop.turn(); });
}

} // namespace platform
