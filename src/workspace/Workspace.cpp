#include "workspace/Workspace.h"

#include "platform/bus/SessionBus.h"
#include "platform/loop/RunLoop.h"
#include "workspace/DesktopWorkspace.h"

namespace platform {

Workspace& Workspace::shared() {
    static auto& workspace =
        *new DesktopWorkspace(*RunLoop::current(), ApplicationScan::live(), sessionBus());
    return workspace;
}

} // namespace platform
