#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// What a report needs to know of a program's or a library's file, of 64 bits. Read once; a damaged
/// file, or none, knows nothing. Immutable; any thread.
class ElfFile {
  public:
    explicit ElfFile(const std::string& path);

    /// Empty if unknown.
    [[nodiscard]] const std::string& buildId() const noexcept { return buildId_; }

    /// The address that debug symbols have for the byte at this place of the file; 0 if unknown.
    [[nodiscard]] std::uint64_t addressAt(std::uint64_t offset) const noexcept;

  private:
    struct Segment {
        std::uint64_t offset;
        std::uint64_t size;
        std::uint64_t address;
    };

    std::vector<Segment> segments_; // that are loaded
    std::string buildId_;
};
