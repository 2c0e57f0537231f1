#include "tninstaller/InstallerPlaces.h"

#include "tninstaller/InstallFailure.h"

#include <string_view>

namespace {

constexpr std::string_view toolInBundle = "/Contents/Helpers/TNInstaller";
constexpr const char* pluginInBundle = "/" TONVALE_PLUGIN_IN_BUNDLE;
constexpr const char* pluginInLibrary = "/" TONVALE_PLUGIN_IN_LIBRARY;

} // namespace

InstallerPlaces InstallerPlaces::of(const std::string& tool, const std::string& localLibrary) {
    if (!tool.ends_with(toolInBundle))
        throw InstallFailure(InstallCode::unsafePlace, tool + ": not in Tonvale's bundle");
    if (!localLibrary.starts_with('/'))
        throw InstallFailure(InstallCode::unsafePlace, "The local library is no absolute path");
    const std::string bundle = tool.substr(0, tool.size() - toolInBundle.size());
    const std::string installed = localLibrary + pluginInLibrary;
    const std::size_t slash = installed.rfind('/');
    return {.bundle = bundle,
            .plugin = bundle + pluginInBundle,
            .localLibrary = localLibrary,
            .folder = installed.substr(0, slash),
            .name = installed.substr(slash + 1)};
}
