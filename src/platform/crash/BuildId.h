#pragma once

#include <string>
#include <string_view>

namespace platform {

/// The build id in the notes of an ELF file, in hexadecimal; empty if there is none. The build id
/// names one build of a program or library: debug symbols are found by it.
[[nodiscard]] std::string buildIdInNotes(std::string_view notes);

} // namespace platform
