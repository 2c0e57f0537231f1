#pragma once

#include "plugin/memory/Preferences.h"

#include <optional>
#include <string>
#include <utility>

/// The preferences as they lie on the disk: in the user's own file, which the
/// application may name, else in the standard one, else in a copy that belongs to this user in a
/// folder that all users share; a copy of somebody else is not read. While there is nothing to be
/// read, because a file is just being written, is damaged or has gone, what was read last holds.
/// One thread at a time; reading waits for the disk.
class PreferencesFile {
  public:
    /// com.quarnel.Tonvale.plist in the folder of preferences, and in "Shared" in the local
    /// library.
    static PreferencesFile standard();

    /// Absolute paths; an empty one is no file.
    PreferencesFile(std::string own, std::string copy);

    const std::string& own() const noexcept { return own_; }
    const std::string& standardOwn() const noexcept { return standardOwn_; }
    const std::string& copy() const noexcept { return copy_; }

    /// Another file is the user's own from now on. Without it the standard one still is.
    void setOwn(std::string own) { own_ = std::move(own); }

    /// Reads again. Nothing when it has never been possible; where there is no file at all, nothing
    /// is set.
    const std::optional<Preferences>& read();

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
