#pragma once

#include <QString>

#include <filesystem>

/// Which icon stands in the tray: its name in the icon theme of the helper's bundle. Hosts load it
/// by that name, and colour the symbolic ones as their theme wants. Main thread only.
class MenuBarIcon {
  public:
    /// Reads the preference from `file`: "1" is the coloured icon, anything else, or no file, the
    /// grey one.
    explicit MenuBarIcon(std::filesystem::path file);

    /// Reads the file again; true if the icon is another one now.
    [[nodiscard]] bool reload();

    [[nodiscard]] QString name(bool isMuted) const;

    /// The folder of the icons, which is no part of the desktop's own theme.
    [[nodiscard]] static QString themePath();

    /// The file that the application writes; empty for a user without a home.
    [[nodiscard]] static std::filesystem::path preferenceFile();

  private:
    const std::filesystem::path file_;
    bool isColor_ = false;
};
