#pragma once

#include "tninstaller/GuardedFolder.h"

#include "platform/base/FileDescriptor.h"

#include <memory>
#include <string>

/// A folder with a random name and the mode 0700 beside what is replaced: a new tree is built in
/// it, and an old one goes there to be removed, so that at every instant the one or the other
/// stands. It is locked while it lives, which tells it from one that a killed tool has left.
class Stage {
  public:
    /// In the folder at `path`, which is made if it is missing. Throws InstallFailure.
    [[nodiscard]] static std::unique_ptr<Stage> make(const std::string& path,
                                                     GuardedFolder::Trust trust);

    /// Null if there is no such folder. Throws InstallFailure.
    [[nodiscard]] static std::unique_ptr<Stage> find(const std::string& path,
                                                     GuardedFolder::Trust trust);

    /// Removes the stages that killed tools of this user have left; make() and find() do it first.
    /// What cannot be removed is a line in the system log. Where folders cannot be locked (NFS)
    /// they stay.
    static void sweep(const GuardedFolder& folder) noexcept;

    /// Removes it with all that is in it, as sweep() does.
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    [[nodiscard]] int descriptor() const noexcept { return stage_.get(); }
    [[nodiscard]] const GuardedFolder& folder() const noexcept { return folder_; }

    /// Returns when all that is in it is on the disk. Throws InstallFailure.
    void synchronise();

    /// Puts `name` of the stage in the place of `name` in the folder, of which there may be none,
    /// in one step; returns when that is on the disk. Throws InstallFailure.
    void putInPlace(const std::string& name);

    /// Moves `name` from the folder into the stage. False if there is none. Throws InstallFailure.
    [[nodiscard]] bool takeAway(const std::string& name);

    /// Removes it at once, with all that is in it. Throws InstallFailure; then it stays.
    void clear();

  private:
    enum class Missing { leave, make };
    static std::unique_ptr<Stage> begin(const std::string& path, GuardedFolder::Trust trust,
                                        Missing missing);
    explicit Stage(GuardedFolder folder);
    bool open();

    GuardedFolder folder_;
    std::string name_; // empty while there is none
    platform::FileDescriptor stage_;
};
