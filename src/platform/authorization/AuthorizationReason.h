#pragma once

#include "platform/authorization/PrivilegedTool.h"

#include <QString>

namespace platform {

/// Why a tool does not run as administrator, and what to do about it, in the user's language; the
/// packages are Debian's. Empty if it does, or if the user has cancelled. Any thread.
QString authorizationReason(PrivilegedTool::Answer answer);

} // namespace platform
