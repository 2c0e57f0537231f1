#pragma once

#include "tninstaller/Caller.h"
#include "tninstaller/GuardedFolder.h"
#include "tninstaller/InstallerPlaces.h"
#include "tninstaller/InstallerReply.h"
#include "tninstaller/OwnBundle.h"

#include <cstddef>
#include <string>
#include <vector>

/// Installs the plug-in of the bundle that the tool lies in for all users, and removes it and the
/// bundle. What is not in InstallerPlaces is refused, whatever the arguments say. One line in the
/// system log tells of each failure.
class Installer {
  public:
    /// `rootsTrust` is for the folders that are changed as root; those that another user changes
    /// are bounded by that user's rights.
    Installer(InstallerPlaces places, Caller caller, GuardedFolder::Trust rootsTrust);
    Installer(const Installer&) = delete;
    Installer& operator=(const Installer&) = delete;

    /// "i SOURCE DESTINATION…" or "u PATH…", each item once. All of them are checked before
    /// anything changes; the first that fails ends the work.
    InstallerReply run(const std::vector<std::string>& arguments);

  private:
    void perform(const std::vector<std::string>& arguments, std::size_t& index) const;
    void check(const std::vector<std::string>& item) const;
    void carryOut(const std::vector<std::string>& item) const;
    void install() const;
    void uninstallPlugin() const;
    GuardedFolder::Trust trust() const noexcept;
    std::string libraryPath(const std::string& path) const;

    const InstallerPlaces places_;
    const std::string installed_; // the plug-in's place
    const Caller caller_;
    const GuardedFolder::Trust rootsTrust_;
    const OwnBundle bundle_;
};
