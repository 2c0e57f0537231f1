#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Programs that are known by the name of their file only, and have the same one: while both are
/// there, the later one's name carries its folder, as in "player (nightly)". The names of folders
/// that tell programs apart are those that stay the same at each start and with each version; see
/// distinguishingFolders(). Any thread.

/// The folders above the file that tell its program from another one called `name`, the nearest
/// first, as far as they have a name that lasts. Not those that many programs have, such as "bin",
/// nor one that is called like the program. None for a temporary file.
std::vector<std::string> distinguishingFolders(std::string_view path, std::string_view name);

/// Whether `called` is a name that disambiguatedName() could give to a program whose plain name is
/// `plain`.
bool isDisambiguatedName(std::string_view called, const std::string& plain,
                         const std::vector<std::string>& folders);

/// A program that is there.
struct NamedProgram {
    std::string name; ///< as it is called
    std::vector<std::string>
        folders; ///< its distinguishingFolders(), if it is known by its file only
};

/// The name of a program beside those that are there: that of one from the same folders; else the
/// plain name if nobody has that, or with the nearest folder that tells it from who has. Without
/// such a folder it is the plain name too, so that both are one program for a person.
std::string disambiguatedName(const std::string& plain, const std::vector<std::string>& folders,
                              std::span<const NamedProgram> others);
