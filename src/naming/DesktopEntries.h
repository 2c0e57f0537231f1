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

/// The desktop entries of the installed applications, indexed by everything that can identify a
/// program. An entry in an earlier folder replaces those with its id in later ones; a hidden one
/// does too, and is then left out.
///
/// A file is read once, and again when refresh() finds that it has changed. One thread; returned
/// entries are valid until the next refresh().
class DesktopEntries {
  public:
    using Found = std::vector<const DesktopEntry*>;

    /// The folders of entries, in the order of search: "applications" in $XDG_DATA_HOME and in each
    /// of $XDG_DATA_DIRS, then those of flatpak and snap, which are not always in the environment
    /// of services.
    static std::vector<std::string> usualFolders();

    /// Reads the entries. `files` must outlive the object.
    DesktopEntries(std::vector<std::string> folders, DesktopEnvironment environment,
                   const ProgramFiles& files);
    DesktopEntries(const DesktopEntries&) = delete;
    DesktopEntries& operator=(const DesktopEntries&) = delete;

    /// Reads new and changed files. Returns whether anything has changed.
    bool refresh();

    /// The same, and makes `watch` follow the folders of entries and all files in them.
    bool refresh(platform::PathsWatch& watch);

    /// Reads all of them again in another language. Does nothing if it is the same.
    void setLanguages(const std::string& languages);
    [[nodiscard]] const std::string& languages() const noexcept { return environment_.languages; }

    /// Grows with each change: earlier results may then be outdated.
    [[nodiscard]] std::uint64_t generation() const noexcept { return generation_; }

    [[nodiscard]] const std::vector<std::string>& folders() const noexcept { return folders_; }

    /// The file system in which programs are searched.
    [[nodiscard]] const ProgramFiles& files() const noexcept { return files_; }

    [[nodiscard]] std::size_t size() const noexcept { return entries_.size(); }

    /// The entry with this id, with or without ".desktop", or null.
    [[nodiscard]] const DesktopEntry* find(std::string_view id) const;

    /// The entry that was read from the file, or from a link to it; or null.
    [[nodiscard]] const DesktopEntry* ofFile(std::string_view path) const;

    /// The first entry with this displayed name, truncated like names of applications; or null.
    [[nodiscard]] const DesktopEntry* called(std::string_view name) const;

    /// Those whose program or script is the file, with links resolved.
    [[nodiscard]] Found ofProgram(std::string_view path) const;

    /// Those whose program has its own folder which contains the file.
    [[nodiscard]] Found ofFolder(std::string_view path) const;

    /// Those whose command, or whose id, is this name of a program without a path.
    [[nodiscard]] Found ofName(std::string_view name) const;

    /// Those with this window class, ignoring case.
    [[nodiscard]] Found ofWindow(std::string_view application) const;

    /// Those that start an application in a sandbox, named as by sandboxApplication().
    [[nodiscard]] Found ofSandbox(std::string_view application) const;

    /// The entry that starts this Steam game, or null.
    [[nodiscard]] const DesktopEntry* ofGame(std::string_view number) const;

    /// The only entry with this icon, or null.
    [[nodiscard]] const DesktopEntry* ofIcon(std::string_view icon) const;

  private:
    /// Detects that a file has been written since.
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
    std::vector<const DesktopEntry*> entries_; // one for each id, in search order
    std::unordered_map<std::string, const DesktopEntry*, TextHash, std::equal_to<>> byId_;
    Index byProgram_;
    Index byFolder_;
    Index byName_;
    Index byWindow_;
    Index bySandbox_;
    Index byGame_;
    Index byIcon_;
};
