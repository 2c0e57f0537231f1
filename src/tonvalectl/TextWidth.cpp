#include "tonvalectl/TextWidth.h"

#include <glib.h>

#include <sys/ioctl.h>
#include <unistd.h>

namespace {

std::size_t columnsOf(gunichar character) {
    if (g_unichar_iszerowidth(character) != FALSE)
        return 0;
    return g_unichar_iswide(character) != FALSE ? 2 : 1;
}

} // namespace

std::size_t TextWidth::columns(const std::string& text) {
    std::size_t columns = 0;
    for (const char* at = text.c_str(); *at != '\0'; at = g_utf8_next_char(at))
        columns += columnsOf(g_utf8_get_char(at));
    return columns;
}

std::string TextWidth::cut(const std::string& text, std::size_t most) {
    if (columns(text) <= most)
        return text;
    std::size_t taken = 1; // of the ellipsis
    const char* at = text.c_str();
    for (; *at != '\0'; at = g_utf8_next_char(at)) {
        taken += columnsOf(g_utf8_get_char(at));
        if (taken > most)
            break;
    }
    return std::string(text.c_str(), at) + "…";
}

std::optional<std::size_t> TextWidth::ofTerminal() {
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return std::nullopt;
    return size.ws_col;
}
