#include "platform/desktop/Workspace.h"

#include "platform/bus/SessionBus.h"
#include "platform/desktop/DesktopWorkspace.h"
#include "platform/loop/RunLoop.h"

namespace platform {

Workspace& Workspace::shared() {
    static auto& workspace =
        *new DesktopWorkspace(*RunLoop::current(), ApplicationScan::live(), sessionBus());
    return workspace;
}

} // namespace platform
