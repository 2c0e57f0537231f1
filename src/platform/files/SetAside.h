#pragma once

#include <filesystem>
#include <optional>

namespace platform {

/// A file or folder that has left its place without being deleted. Moves are one step each: it is
/// at either place, whole. Any thread.
class SetAside {
  public:
    /// Moves it to the Trash of the desktop, where file managers can put it back. Nothing, with
    /// errno set, if that is impossible: the Trash is on another file system (EXDEV), cannot be
    /// written, or the user has no home.
    [[nodiscard]] static std::optional<SetAside> toTrash(const std::filesystem::path& path);

    /// Renames it in its folder, with the first number that is free: "Name 2.app".
    [[nodiscard]] static std::optional<SetAside> beside(const std::filesystem::path& path);

    /// To the Trash if possible, else beside.
    [[nodiscard]] static std::optional<SetAside> anywhere(const std::filesystem::path& path);

    /// Where it is now.
    [[nodiscard]] const std::filesystem::path& place() const noexcept { return place_; }

    /// Moves it back, if its former place is free. False with errno set if that fails.
    bool putBack() const noexcept;

  private:
    SetAside(std::filesystem::path from, std::filesystem::path place,
             std::filesystem::path information)
        : from_(std::move(from)), place_(std::move(place)), information_(std::move(information)) {}

    std::filesystem::path from_;
    std::filesystem::path place_;
    std::filesystem::path information_; // the Trash's, on where it came from; empty beside
};

/// Whether a file lies in a trash folder: the user's, one of a volume (".Trash", ".Trash-1000"),
/// or one that another system has made (".Trashes").
[[nodiscard]] bool isInTrash(const std::filesystem::path& path);

/// Renames; fails with EEXIST if something is at the new place already.
[[nodiscard]] bool renameToFreePlace(const std::filesystem::path& from,
                                     const std::filesystem::path& to) noexcept;

} // namespace platform
