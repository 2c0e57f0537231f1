#include "framework/installer/BundleSearch.h"

#include "framework/installer/QNAppInstaller.h"
#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"
#include "platform/loop/DispatchQueue.h"

#include <QVersionNumber>

#include <system_error>
#include <utility>

namespace fs = std::filesystem;

namespace {

void addBundlesIn(const fs::path& folder, std::vector<fs::path>& bundles) {
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; each != end; each.increment(error)) {
        if (each->path().extension() == ".app")
            bundles.push_back(each->path());
    }
}

fs::path bestToReplace(const fs::path& path, std::vector<fs::path> bundles) {
    std::erase_if(bundles,
                  [](const fs::path& each) { return !QNAppInstaller::isValidInstallPath(each); });
    return bestUpgradeURLForBundle(path, bundles);
}

} // namespace

BundleFacts bundleFacts(const fs::path& path) {
    const fs::path contents = path / "Contents";
    std::error_code error;
    if (!fs::is_regular_file(contents / "Info.plist", error))
        return {};
    const platform::Bundle bundle(contents);
    return {.identifier = bundle.identifier(),
            .version = bundle.version(),
            .name = bundle.name(),
            .program = bundle.text("CFBundleExecutable")};
}

bool isNewerVersion(const std::string& one, const std::string& other) {
    const auto number = [](const std::string& text) {
        return QVersionNumber::fromString(QString::fromStdString(text)).normalized();
    };
    return number(one) > number(other);
}

fs::path bestUpgradeURLForBundle(const fs::path& path, const std::vector<fs::path>& bundles) {
    const std::string identifier = bundleFacts(path).identifier;
    fs::path best;
    std::string version;
    for (const fs::path& each : bundles) {
        std::error_code error;
        BundleFacts facts = bundleFacts(each);
        if (facts.identifier.empty() || facts.identifier != identifier ||
            fs::equivalent(each, path, error))
            continue;
        if (best.empty() || isNewerVersion(facts.version, version)) {
            best = each;
            version = std::move(facts.version);
        }
    }
    return best;
}

std::vector<fs::path> installedBundles() {
    std::vector<fs::path> bundles;
    for (const auto domain : {platform::Domain::local, platform::Domain::user})
        addBundlesIn(platform::applicationsDirectory(domain), bundles);
    return bundles;
}

fs::path findUpgradePath(const fs::path& path) {
    return bestToReplace(path, installedBundles());
}

void upgradePathForURL(const fs::path& folder, const fs::path& path,
                       std::function<void(const fs::path& found)> completion) {
    platform::DispatchQueue::global()->async([folder, path, completion = std::move(completion)] {
        std::vector<fs::path> bundles;
        addBundlesIn(folder, bundles);
        platform::DispatchQueue::main()->async(
            [completion, found = bestToReplace(path, bundles)] { completion(found); });
    });
}
