#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

/// What tells copies of an application apart. Empty texts for what is no bundle.
struct BundleFacts {
    std::string identifier;
    std::string version;
    std::string name;
    std::string program; ///< the file name of the executable
};

/// Reads them from the bundle at `path`. Any thread.
[[nodiscard]] BundleFacts bundleFacts(const std::filesystem::path& path);

/// Whether version `one` is later than `other`: "1.10" is later than "1.9".
[[nodiscard]] bool isNewerVersion(const std::string& one, const std::string& other);

/// All bundles in both Applications folders. Any thread.
[[nodiscard]] std::vector<std::filesystem::path> installedBundles();

/// Of `bundles`, the newest with the identifier of the bundle at `path`, but not that one itself;
/// empty if there is none. Any thread.
[[nodiscard]] std::filesystem::path
bestUpgradeURLForBundle(const std::filesystem::path& path,
                        const std::vector<std::filesystem::path>& bundles);

/// The newest other copy of the bundle at `path` in both Applications folders, where it can be
/// replaced; empty if there is none. Any thread.
[[nodiscard]] std::filesystem::path findUpgradePath(const std::filesystem::path& path);

/// Looks for such a copy in `folder` without waiting for the disk, and calls `completion` with it
/// on the main thread. Main thread only.
void upgradePathForURL(const std::filesystem::path& folder, const std::filesystem::path& path,
                       std::function<void(const std::filesystem::path& found)> completion);
