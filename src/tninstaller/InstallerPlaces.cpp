#include "tninstaller/InstallerPlaces.h"

#include "tninstaller/InstallFailure.h"

#include <string_view>

namespace {

constexpr std::string_view toolInBundle = "/Contents/Helpers/TNInstaller";
constexpr const char* pluginName = "Tonvale.plugin";

} // namespace

InstallerPlaces InstallerPlaces::of(const std::string& tool, const std::string& localLibrary) {
    if (!tool.ends_with(toolInBundle))
        throw InstallFailure(InstallCode::unsafePlace, tool + ": not in Tonvale's bundle");
    if (!localLibrary.starts_with('/'))
        throw InstallFailure(InstallCode::unsafePlace, "The local library is no absolute path");
    const std::string bundle = tool.substr(0, tool.size() - toolInBundle.size());
    return {.bundle = bundle,
            .plugin = bundle + "/Contents/PlugIns/" + pluginName,
            .localLibrary = localLibrary,
            .folder = localLibrary + "/Audio/Plug-Ins/HAL",
            .name = pluginName};
}
