#pragma once

#include <string>
#include <string_view>

namespace platform {

/// A text that a stranger chose, such as the name of a program, as one line of a window or of a
/// terminal shows it: nothing in it commands a terminal, begins a line, turns the text beside it or
/// hides. For the eye only: never compare or store it.
///
/// - Control characters (U+0080 to U+009F too) and separators of lines become blanks, so that what
///   is left of an escape sequence is plain text.
/// - Embeddings, overrides and isolates go (turnsDirection()), and so do characters that show
///   nothing and that no writing needs: the zero-width space, the soft hyphen, tags and their like.
///   Joiners, variation selectors and the marks of right-to-left writing stay.
/// - Bytes that are no UTF-8 become question marks.
///
/// Any thread.
std::string shownLine(std::string_view text);

} // namespace platform
