#pragma once

#include "tninstaller/Caller.h"
#include "tninstaller/GuardedFolder.h"

#include <functional>
#include <string>

/// The bundle that the tool lies in. Who may write the folder that it lies in decides how it is
/// removed: with the caller's rights if the caller may, else with root's, where only root may.
class OwnBundle {
  public:
    /// `path` is absolute and canonical; `rootsTrust` is for what is changed as root. `caller` must
    /// outlive this.
    OwnBundle(std::string path, const Caller& caller, GuardedFolder::Trust rootsTrust);

    /// Throws InstallFailure if it is not Tonvale's, belongs to a package or to a user who is
    /// neither the caller nor root, or lies in a folder that others may write. What the caller may
    /// not see is not looked at.
    void expectRemovable() const;

    /// The same, and removes it. Throws InstallFailure.
    void remove() const;

    /// Removes what a killed removal of such a bundle has left in the same folder.
    void sweepBeside() const noexcept;

  private:
    using Work = std::function<void(GuardedFolder::Trust)>;
    void asWhoMayChangeFolder(const Work& work) const;
    GuardedFolder folder(GuardedFolder::Trust trust) const;
    void check() const;
    void checkContents(int bundle) const;

    const std::string path_;
    const std::string above_; // the folder that it lies in
    const std::string name_;
    const Caller& caller_;
    const GuardedFolder::Trust rootsTrust_;
};
