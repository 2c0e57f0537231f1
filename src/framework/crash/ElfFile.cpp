#include "framework/crash/ElfFile.h"

#include "platform/base/FileDescriptor.h"
#include "platform/crash/BuildId.h"

#include <algorithm>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

namespace {

using platform::FileDescriptor;

constexpr std::size_t longestNotes = std::size_t{1} << 16U;

template <typename Struct>
bool read(const FileDescriptor& file, Struct& target, std::uint64_t offset) {
    return ::pread(file.get(), &target, sizeof(target), static_cast<off_t>(offset)) ==
           static_cast<ssize_t>(sizeof(target));
}

std::string notesIn(const FileDescriptor& file, const Elf64_Phdr& header) {
    std::string notes(std::min<std::size_t>(header.p_filesz, longestNotes), '\0');
    const ssize_t size =
        ::pread(file.get(), notes.data(), notes.size(), static_cast<off_t>(header.p_offset));
    notes.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
    return notes;
}

} // namespace

ElfFile::ElfFile(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    Elf64_Ehdr head{};
    if (!file || !read(file, head, 0) || std::memcmp(head.e_ident, ELFMAG, SELFMAG) != 0 ||
        head.e_ident[EI_CLASS] != ELFCLASS64 || head.e_phentsize != sizeof(Elf64_Phdr))
        return;
    for (std::size_t i = 0; i < head.e_phnum; ++i) {
        Elf64_Phdr header{};
        if (!read(file, header, head.e_phoff + i * sizeof(header)))
            return;
        if (header.p_type == PT_LOAD)
            segments_.push_back({header.p_offset, header.p_filesz, header.p_vaddr});
        else if (header.p_type == PT_NOTE && buildId_.empty())
            buildId_ = platform::buildIdInNotes(notesIn(file, header));
    }
}

std::uint64_t ElfFile::addressAt(std::uint64_t offset) const noexcept {
    for (const Segment& each : segments_) {
        if (offset >= each.offset && offset - each.offset < each.size)
            return each.address + (offset - each.offset);
    }
    return 0;
}
