#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// How one of the system's tools is run: in the C locale with UTF-8, without input, without the
/// network of debuggers, and with none of our environment but what leads to the user's session.
struct ToolCall {
    std::vector<std::string> arguments; ///< begin with the absolute path
    std::chrono::milliseconds timeLimit{10000};
    std::size_t outputLimit = std::size_t{8} << 20U; ///< bytes
    bool keepsEnd = false;     ///< drops the begin of a longer output, instead of ending the tool
    int outputDescriptor = -1; ///< where the output goes instead, without a limit
};

struct ToolResult {
    int status = 0;      ///< of its end, or 128 + the signal that ended it
    std::string output;  ///< without what it says on standard error
    bool isCut = false;  ///< the output is longer
    bool isLate = false; ///< it was ended since the time was over
};

/// Runs a tool to its end; what it has started ends with it. Nothing if it could not be started.
/// Blocks; any thread.
[[nodiscard]] std::optional<ToolResult> runTool(const ToolCall& call);

} // namespace platform
