#pragma once

#include "plugin/memory/Preferences.h"

#include <optional>
#include <string>
#include <utility>

/// Reads the preferences from the user's own file, which the application may name, else from the
/// standard one, else from a copy in a shared folder, if it belongs to this user. While no file can
/// be read, because it is being written, is damaged or missing, the last values stay valid. One
/// thread at a time; reading waits for the disk.
class PreferencesFile {
  public:
    /// com.quarnel.Tonvale.plist in the folder of preferences, and in "Shared" in the local
    /// library.
    static PreferencesFile standard();

    /// Absolute paths; an empty one means no file.
    PreferencesFile(std::string own, std::string copy);

    [[nodiscard]] const std::string& own() const noexcept { return own_; }
    [[nodiscard]] const std::string& standardOwn() const noexcept { return standardOwn_; }
    [[nodiscard]] const std::string& copy() const noexcept { return copy_; }

    /// Sets the user's own file. If it does not exist, the standard one is used.
    void setOwn(std::string own) { own_ = std::move(own); }

    /// Reads again. Nothing if reading has never succeeded; if there is no file at all, the
    /// preferences are empty.
    [[nodiscard]] const std::optional<Preferences>& read();

  private:
    enum class State { good, missing, bad };
    struct Reading {
        State state;
        Preferences preferences = {};
        std::string reason = {}; // of a bad one
    };

    static Reading readFile(const std::string& path, bool isCopy);
    bool isToBeReplaced(State own) const;
    void report(const Reading& own);

    std::string own_;
    std::string standardOwn_; // as in the beginning
    std::string copy_;
    std::optional<Preferences> last_;
    bool reported_ = false;
};
