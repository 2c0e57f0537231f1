#pragma once

#include <string>

namespace platform {

/// What there is to know about the machine and its system. A fact that cannot be had is empty. Any
/// thread.

/// The version of the distribution, VERSION_ID of os-release(5): "12".
std::string productVersion();

/// The build of the system, here the release of its kernel: "6.1.0-18-amd64".
std::string productBuild();

} // namespace platform
