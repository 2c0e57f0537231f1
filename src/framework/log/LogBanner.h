#pragma once

#include <string>

namespace platform {
class Bundle;
}

namespace QN::log {

/// The first message of a log: the version of the application that the bundle states, and the
/// version and build of the system.
std::string banner(const platform::Bundle& bundle, const std::string& productVersion,
                   const std::string& productBuild);

} // namespace QN::log
