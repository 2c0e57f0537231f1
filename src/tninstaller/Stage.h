#pragma once

#include "tninstaller/GuardedFolder.h"

#include "platform/base/FileDescriptor.h"

#include <string>

/// A folder with a random name and the mode 0700 beside what is replaced: a new tree is built in
/// it, and an old one goes there to be removed, so that at every instant the one or the other
/// stands.
class Stage {
  public:
    /// Removes the stages that a killed tool has left. Callers must hold the folder's lock. A stage
    /// that cannot be removed is a line in the system log.
    static void sweep(const GuardedFolder& folder);

    /// `folder` must outlive this. Throws InstallFailure.
    explicit Stage(const GuardedFolder& folder);

    /// Removes it with all that is in it, as sweep() does.
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    [[nodiscard]] int descriptor() const noexcept { return stage_.get(); }

    /// Puts `name` of the stage in the place of `name` in the folder, of which there may be none.
    /// All of it is on the disk before and after. Throws InstallFailure.
    void putInPlace(const std::string& name);

    /// Moves `name` from the folder into the stage. False if there is none. Throws InstallFailure.
    [[nodiscard]] bool takeAway(const std::string& name);

    /// Removes `name` of the stage. Throws InstallFailure.
    void clear(const std::string& name);

  private:
    const GuardedFolder& folder_;
    std::string name_;
    platform::FileDescriptor stage_;
};
