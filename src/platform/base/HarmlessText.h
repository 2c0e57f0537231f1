#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// Texts that strangers chose, such as the names of programs, made harmless where people read them.
/// What does harm:
///
/// - bytes that are no UTF-8, and control characters (U+0080 to U+009F too), which terminals obey;
/// - what begins a line: the line feed, U+0085, the separators U+2028 and U+2029;
/// - what turns the direction of the text behind it: embeddings, overrides and isolates, and their
///   ends. The marks that belong to right-to-left writing do not;
/// - what shows nothing and no writing needs: the zero-width space, the soft hyphen, tags and their
///   like. Joiners and variation selectors are no such characters.
///
/// Each function is for one kind of reader. None is for texts that are compared or stored. Any
/// thread.
namespace platform {

enum class ControlsKept : std::uint8_t { none, lineFeedAndTab };

/// For files of lines, in place: question marks overwrite the first kind, byte by byte. The length
/// stays. Neither allocates nor throws.
void makeHarmless(std::span<char> text, ControlsKept kept) noexcept;

/// For lines that tell exactly what a text is, those of the system log: an escape stands for all
/// but the fourth kind: "\n", "\u202e", "\xff".
std::string printableText(std::string_view text);

/// For one line of a window or a terminal: controls and separators are blanks, so that what is left
/// of an escape sequence is plain text; bytes that are no UTF-8 are question marks; the third and
/// the fourth kind go.
std::string shownLine(std::string_view text);

/// Whether a character is of the second or the third kind: a line with it would show something else
/// than it says. For texts whose other characters somebody else makes harmless.
[[nodiscard]] bool disturbsLine(char32_t character) noexcept;

} // namespace platform
