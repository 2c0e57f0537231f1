#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Unique names for programs that are known by their file name only, and share it: while both
/// exist, the later one's name contains its folder, as in "player (nightly)". Only folder names
/// that stay the same at each start and with each version are used; see distinguishingFolders().
/// Any thread.

/// The parent folders of the file that distinguish its program from another one called `name`, the
/// nearest first, if their names are stable. Without common ones, such as "bin", and one named like
/// the program. None for a temporary file.
std::vector<std::string> distinguishingFolders(std::string_view path, std::string_view name);

/// Whether disambiguatedName() could return `called` for a program whose plain name is `plain`.
[[nodiscard]] bool isDisambiguatedName(std::string_view called, const std::string& plain,
                                       const std::vector<std::string>& folders);

/// An existing program.
struct NamedProgram {
    std::string name;                 ///< its current name
    std::vector<std::string> folders; ///< its distinguishingFolders(), if only its file is known
};

/// A program's name beside the existing ones: that of one from the same folders; else the plain
/// name if it is free, or the plain name with the nearest folder that distinguishes it from the
/// program that has it. Without such a folder it is the plain name too, so that both are shown as
/// one program.
std::string disambiguatedName(const std::string& plain, const std::vector<std::string>& folders,
                              std::span<const NamedProgram> others);
