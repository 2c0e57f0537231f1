#pragma once

#include "naming/DesktopEntry.h"

#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <unordered_map>
#include <vector>

namespace platform {
class PathsWatch;
} // namespace platform

/// The desktop entries of the applications that are installed, by all that a program may be known
/// by. An entry of an earlier folder takes the place of those of its id in later ones; a hidden one
/// does too, and stands for none.
///
/// A file is read once, and again when refresh() finds that it has changed. One thread; entries
/// that have been answered are valid until the next refresh().
class DesktopEntries {
  public:
    using Found = std::vector<const DesktopEntry*>;

    /// The folders of entries, in the order of search: "applications" in $XDG_DATA_HOME and in each
    /// of $XDG_DATA_DIRS, then where flatpak and snap put theirs, which services are not always
    /// told.
    static std::vector<std::string> usualFolders();

    /// Reads the entries. `files` must outlive the object.
    DesktopEntries(std::vector<std::string> folders, DesktopEnvironment environment,
                   const ProgramFiles& files);
    DesktopEntries(const DesktopEntries&) = delete;
    DesktopEntries& operator=(const DesktopEntries&) = delete;

    /// Reads what is new or has changed. Whether there is any difference.
    bool refresh();

    /// The same, and has `watch` follow the folders of entries and all files in them.
    bool refresh(platform::PathsWatch& watch);

    /// Reads all of them again, in another language. Nothing is done if it is the same.
    void setLanguages(const std::string& languages);

    /// Grows with each difference: what was found before may not hold any more.
    std::uint64_t generation() const noexcept { return generation_; }

    const std::vector<std::string>& folders() const noexcept { return folders_; }

    /// Where programs are looked for.
    const ProgramFiles& files() const noexcept { return files_; }

    std::size_t size() const noexcept { return entries_.size(); }

    /// The one of the id, with or without ".desktop", or null.
    const DesktopEntry* find(std::string_view id) const;

    /// The one that was read from the file, or that a link leads to it from; or null.
    const DesktopEntry* ofFile(std::string_view path) const;

    /// The first one that a person knows by this name, cut as names of applications are; or null.
    const DesktopEntry* called(std::string_view name) const;

    /// Those whose program or script is the file, whatever links lead there.
    Found ofProgram(std::string_view path) const;

    /// Those whose program has a folder of its own in which the file lies.
    Found ofFolder(std::string_view path) const;

    /// Those whose command, or whose id, is the bare name of a program.
    Found ofName(std::string_view name) const;

    /// Those that call their windows so, in any case of letters.
    Found ofWindow(std::string_view application) const;

    /// Those that start an application in a sandbox, named as by sandboxApplication().
    Found ofSandbox(std::string_view application) const;

    /// The one that has Steam start the game, or null.
    const DesktopEntry* ofGame(std::string_view number) const;

    /// The one that has this icon and no other's, or null.
    const DesktopEntry* ofIcon(std::string_view icon) const;

  private:
    /// What tells that a file has been written since.
    struct Stamp {
        dev_t device = 0;
        ino_t number = 0;
        off_t size = 0;
        timespec written{};

        bool operator==(const Stamp& other) const noexcept;
    };
    struct File {
        Stamp stamp;
        std::string id;
        std::optional<DesktopEntry> entry;
        bool isThere = true;
    };
    struct TextHash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept {
            return std::hash<std::string_view>()(text);
        }
    };
    using Index = std::unordered_map<std::string, Found, TextHash, std::equal_to<>>;

    bool scan(const std::string& path, const std::string& prefix);
    std::vector<std::string> readPaths() const;
    void rebuild();
    void index(const DesktopEntry& entry);
    static Found in(const Index& index, std::string_view key);

    const std::vector<std::string> folders_;
    DesktopEnvironment environment_;
    const ProgramFiles& files_;
    std::uint64_t generation_ = 0;

    std::map<std::string, File> known_; // by path
    std::vector<std::string> subfolders_;
    std::vector<const DesktopEntry*> entries_; // one for each id, by the order of search
    std::unordered_map<std::string, const DesktopEntry*, TextHash, std::equal_to<>> byId_;
    Index byProgram_;
    Index byFolder_;
    Index byName_;
    Index byWindow_;
    Index bySandbox_;
    Index byGame_;
    Index byIcon_;
};
