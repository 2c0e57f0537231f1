#pragma once

#include <filesystem>
#include <optional>
#include <string>

/// What the application has left in its preferences for this program. Read afresh by each call, and
/// not trusted. Any thread.
namespace InstalledApplication {

/// The program of the application that was started last; nothing if it is not there any more, or
/// not a bundle of the application.
[[nodiscard]] std::optional<std::filesystem::path> program();

/// The language of its texts, such as "de_DE" or "C"; empty if it is not known.
[[nodiscard]] std::string language();

} // namespace InstalledApplication
