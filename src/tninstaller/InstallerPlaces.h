#pragma once

#include <string>

/// Where what the tool handles lies. Nothing of it can be chosen by the tool's caller.
struct InstallerPlaces {
    /// `tool` is the canonical path of the running tool, in the bundle's Contents/Helpers;
    /// `localLibrary` the folder for what all users share. Throws InstallFailure for a tool that
    /// lies elsewhere, and for a library that is no absolute path.
    static InstallerPlaces of(const std::string& tool, const std::string& localLibrary);

    std::string bundle;       ///< the application
    std::string plugin;       ///< the plug-in in it
    std::string localLibrary; ///< as given
    std::string folder;       ///< of the installed plug-in
    std::string name;         ///< of the plug-in's folder
};
