#pragma once

#include <QString>

#include <filesystem>
#include <optional>
#include <vector>

namespace platform {

/// A program that starts with the desktop session.
struct LoginItem {
    QString name;     ///< as desktops show it, in English
    QString program;  ///< the path of a program, or of the bundle that it lies in
    QString required; ///< the program without which it does not start; may be empty
    std::filesystem::path file;
    bool isOwn = false;         ///< in the user's folder
    bool isSwitchedOff = false; ///< the user keeps it from starting
};

/// The programs that start when the user logs in: the desktop's autostart entries. A file of the
/// user's shadows one of the same name of the system's. An item that is switched off still exists,
/// so that nothing switches it on again. Everything is read afresh by each call; nothing is
/// translated. Main thread only.
class LoginItems {
  public:
    struct Folders {
        std::filesystem::path own; ///< empty: the user has none
        std::vector<std::filesystem::path> system = {};
    };

    /// Where desktops look for autostart entries, the user's folder first.
    static Folders usualFolders();

    /// New items start only as long as the program `required` is there; empty: always.
    explicit LoginItems(Folders folders, QString required = {});

    /// In the order of their files' names.
    [[nodiscard]] std::vector<LoginItem> all() const;

    /// Whether there is an item with this name, in any letter case, or else with this path of a
    /// bundle or program; either may be empty. The first one goes to `item`, which may be null.
    [[nodiscard]] bool loginItemExists(const QString& name, const QString& URL,
                                       std::optional<LoginItem>* item) const;
    [[nodiscard]] bool loginItemExists(const QString& name, const QString& URL) const;

    /// Whether the item starts only as long as another program is there than a new one would, which
    /// addToLoginItems() corrects. Not if it is switched off, or not the user's.
    [[nodiscard]] bool isOutdated(const LoginItem& item) const;

    /// Adds the bundle with this path, with its own name. False if it is none, or if the entry
    /// cannot be written.
    [[nodiscard]] bool addToLoginItems(const QString& URL);

    /// Removes the item that loginItemExists() finds; false if there is none, or if it is not the
    /// user's or cannot be removed. One that is switched off does not start anyway: it stays as the
    /// user wants it, and the result is true.
    [[nodiscard]] bool removeFromLoginItems(const QString& URL, const QString& name);

  private:
    const Folders folders_;
    const QString required_;
};

} // namespace platform
