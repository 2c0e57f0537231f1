#include "naming/DisambiguatedName.h"

#include "naming/ApplicationName.h"
#include "naming/ProgramKinds.h"
#include "naming/StableName.h"

#include <algorithm>
#include <iterator>

namespace {

/// Whether entries of this folder are mostly created anew at each start, under new names.
bool isTemporary(std::string_view path) {
    return path.starts_with("/tmp/") || path.starts_with("/var/tmp/") ||
           path.starts_with("/dev/shm/");
}

/// Whether programs of all kinds lie in folders of this name.
bool isCommon(std::string_view folder) {
    constexpr std::string_view common[] = {"app",   "bin", "build",    "current", "dist",
                                           "files", "lib", "lib64",    "libexec", "program",
                                           "sbin",  "src", "resources"};
    return std::ranges::find(common, folder) != std::end(common);
}

std::string withFolder(const std::string& plain, const std::string& folder) {
    return sanitizedName(plain + " (" + folder + ")");
}

/// Whether the folder at this index distinguishes a program from the others.
bool isTelling(const std::string& folder, std::size_t place,
               std::span<const NamedProgram* const> others) {
    return std::ranges::none_of(others, [&](const NamedProgram* other) {
        return place < other->folders.size() && other->folders[place] == folder;
    });
}

} // namespace

std::vector<std::string> distinguishingFolders(std::string_view path, std::string_view name) {
    std::vector<std::string> folders;
    if (isTemporary(path))
        return folders;
    for (path = folderName(path); !path.empty(); path = folderName(path)) {
        const std::string_view folder = stableFolderName(fileName(path));
        if (!folder.empty() && folder != name && !isCommon(folder))
            folders.emplace_back(folder);
    }
    return folders;
}

bool isDisambiguatedName(std::string_view called, const std::string& plain,
                         const std::vector<std::string>& folders) {
    const auto isWithFolder = [&](const std::string& folder) {
        return called == withFolder(plain, folder);
    };
    return called == plain ||
           (called.starts_with(plain) && std::ranges::any_of(folders, isWithFolder));
}

std::string disambiguatedName(const std::string& plain, const std::vector<std::string>& folders,
                              std::span<const NamedProgram> others) {
    std::vector<const NamedProgram*> namesakes;
    for (const NamedProgram& other : others) {
        if (other.folders == folders && isDisambiguatedName(other.name, plain, folders))
            return other.name;
        if (other.name == plain)
            namesakes.push_back(&other);
    }
    // If the folder of one is unknown, they may be the same.
    if (namesakes.empty() || std::ranges::any_of(namesakes, [](const NamedProgram* other) {
            return other->folders.empty();
        }))
        return plain;
    for (std::size_t place = 0; place < folders.size(); ++place) {
        std::string name = withFolder(plain, folders[place]);
        if (isTelling(folders[place], place, namesakes) &&
            std::ranges::find(others, name, &NamedProgram::name) == others.end())
            return name;
    }
    return plain;
}
