#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// A function, and the line in it, as far as they are known.
struct SourcePlace {
    std::string function; ///< empty if unknown
    std::string file;     ///< without its folder; empty if unknown
    int line = 0;
};

/// The names for an address, as debug symbols have it, in a program's or library's file: of the
/// function, and before it of those that the compiler has put into it, the innermost first. Reads
/// the file's symbols and debug information, or those that are installed for it, on the first call
/// for that file, and keeps what it has read. Any thread; calls wait for each other.
std::vector<SourcePlace> sourcePlacesAt(const std::string& file, std::uint64_t address);

/// The name as a person writes it.
std::string demangledName(const std::string& name);
