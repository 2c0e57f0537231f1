#pragma once

#include <cstddef>
#include <optional>
#include <string>

/// How much room text takes in a terminal, in its columns: two for a wide character, such as those
/// of Chinese, none for one that stands on another. Texts are UTF-8 without control characters.
namespace TextWidth {

std::size_t columns(const std::string& text);

/// The text, if it has at most so many columns; else its beginning and an ellipsis, cut between
/// characters. What stands on a character stays with it. `most` is 1 at least.
std::string cut(const std::string& text, std::size_t most);

/// The width of the terminal that standard output is; nothing when it is none, or does not tell.
std::optional<std::size_t> ofTerminal();

} // namespace TextWidth
