#pragma once

#include <string>
#include <vector>

namespace platform {

/// Starts a program that shares nothing with this one but the environment: in a session of its own,
/// in the folder "/", with default signal actions, without input and output, and with no descriptor
/// of ours. `arguments` begin with its path. Returns 0, else an errno. Any thread.
[[nodiscard]] int startIndependently(const std::vector<std::string>& arguments);

} // namespace platform
