#pragma once

#include "tninstaller/Caller.h"
#include "tninstaller/GuardedFolder.h"
#include "tninstaller/InstallerPlaces.h"
#include "tninstaller/InstallerReply.h"

#include <string>
#include <vector>

/// Installs the plug-in of the bundle that the tool lies in for all users, and removes it and the
/// bundle. What is not in InstallerPlaces is refused, whatever the arguments say. One line in the
/// system log tells of each failure.
class Installer {
  public:
    Installer(InstallerPlaces places, Caller caller);

    /// "i SOURCE DESTINATION…" or "u PATH…". The first item that fails ends the work.
    InstallerReply run(const std::vector<std::string>& arguments);

  private:
    void install(const std::string& source, const std::string& destination);
    void uninstall(const std::string& path);
    void uninstallPlugin();
    void uninstallBundle();
    void removeBundleIn(const GuardedFolder& folder, const std::string& name,
                        GuardedFolder::Trust trust) const;
    void expectBundle(int bundle) const;
    GuardedFolder::Trust trust() const noexcept;
    std::string libraryPath(const std::string& path) const;

    const InstallerPlaces places_;
    const Caller caller_;
};
