#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// The width of text in terminal columns: two for a wide character, such as Chinese ones, none for
/// a combining one. Texts are UTF-8 without control characters.
namespace TextWidth {

std::size_t columns(const std::string& text);

/// The text if it has at most `most` columns; else its beginning and an ellipsis, cut between
/// grapheme clusters. `most` is at least 1.
std::string cut(const std::string& text, std::size_t most);

/// The width of the terminal on standard output; nothing if it is not a terminal, or unknown.
[[nodiscard]] std::optional<std::size_t> ofTerminal();

} // namespace TextWidth
