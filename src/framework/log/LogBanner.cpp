#include "framework/log/LogBanner.h"

#include "platform/bundle/Bundle.h"

namespace QN::log {

namespace {

std::string versionOf(const platform::Bundle& bundle) {
    const std::string& full = bundle.text("CFBundleVersion");
    const std::string& shortened = bundle.text("CFBundleShortVersionString");
    const std::string& build = bundle.text("QNBuildIdentifier");
    std::string version = shortened.empty() ? full : shortened;
    if (!shortened.empty() && !full.empty())
        version += "/" + full;
    if (!version.empty() && !build.empty())
        version += "/" + build;
    return version;
}

} // namespace

std::string banner(const platform::Bundle& bundle, const std::string& productVersion,
                   const std::string& productBuild) {
    const std::string version = versionOf(bundle);
    return "**** " + (version.empty() ? "" : version + " - ") + "OS X Version " + productVersion +
           " (Build " + productBuild + ") (Intel 64-bit) ****";
}

} // namespace QN::log
