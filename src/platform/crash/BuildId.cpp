#include "platform/crash/BuildId.h"

#include <cstddef>
#include <cstring>
#include <elf.h>

namespace platform {

namespace {

std::string inHex(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        const auto number = static_cast<unsigned char>(byte);
        text += "0123456789abcdef"[number >> 4U];
        text += "0123456789abcdef"[number & 0xFU];
    }
    return text;
}

/// Names and contents of notes end on multiples of four.
std::size_t padded(std::size_t size) {
    return (size + 3) & ~std::size_t{3};
}

} // namespace

std::string buildIdInNotes(std::string_view notes) {
    constexpr std::string_view owner("GNU\0", 4);
    Elf64_Nhdr header{}; // the same in files of 32 bits
    while (notes.size() >= sizeof(header)) {
        std::memcpy(&header, notes.data(), sizeof(header));
        notes.remove_prefix(sizeof(header));
        const std::size_t content = padded(header.n_namesz);
        const std::size_t next = content + padded(header.n_descsz);
        if (header.n_namesz > notes.size() || header.n_descsz > notes.size() ||
            content + header.n_descsz > notes.size())
            return {};
        if (header.n_type == NT_GNU_BUILD_ID && notes.substr(0, header.n_namesz) == owner)
            return inHex(notes.substr(content, header.n_descsz));
        notes.remove_prefix(next < notes.size() ? next : notes.size());
    }
    return {};
}

} // namespace platform
