#include "Harness.h"

#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

void run(const std::string& command) {
    if (const auto [status, output] = support::runCommand({"sh", "-c", command + " 2>&1"});
        status != 0)
        throw std::runtime_error(command + ": " + output);
}

/// A file system in a file, which only root can mount.
class Ext4Image {
  public:
    Ext4Image(const fs::path& image, const fs::path& folder) : folder_(folder) {
        fs::create_directories(folder_);
        run("truncate -s 256M '" + image.string() + "' && mkfs.ext4 -q '" + image.string() +
            "' && mount -o loop '" + image.string() + "' '" + folder_.string() + "'");
    }
    ~Ext4Image() { support::runCommand({"umount", folder_}); }
    Ext4Image(const Ext4Image&) = delete;
    Ext4Image& operator=(const Ext4Image&) = delete;

  private:
    const fs::path folder_;
};

/// A bundle with the plug-in of this build, and two places to put it.
class Places {
  public:
    Places() {
        fs::create_directories(tool().parent_path());
        fs::create_directories(plugin().parent_path());
        fs::copy_file(TONVALE_INSTALLER, tool());
        const fs::path built = fs::path(TONVALE_PLUGIN).parent_path().parent_path().parent_path();
        fs::copy(built, plugin(), fs::copy_options::recursive);
        current = this;
    }
    ~Places() { current = nullptr; }
    Places(const Places&) = delete;
    Places& operator=(const Places&) = delete;

    fs::path tool() const { return contents_ / "Helpers/TNInstaller"; }
    fs::path plugin() const { return contents_ / "PlugIns/Tonvale.plugin"; }
    fs::path ours() const { return folder_.path() / "ours"; }
    fs::path peers() const { return folder_.path() / "peers"; }

    static inline const Places* current = nullptr;

  private:
    const support::PrivateFolder folder_;
    const fs::path contents_ = folder_.path() / "Tonvale.app/Contents";
    const Ext4Image first_{folder_.path() / "ours.img", ours()};
    const Ext4Image second_{folder_.path() / "peers.img", peers()};
};

/// Of a copy to `folder`, where there is none yet.
double milliseconds(const fs::path& folder, const std::string& command) {
    fs::remove_all(folder);
    fs::create_directories(folder.parent_path());
    run("sync -f '" + folder.parent_path().string() + "'");
    const auto begin = Clock::now();
    run(command);
    const std::chrono::duration<double, std::milli> time = Clock::now() - begin;
    run("diff -r '" + Places::current->plugin().string() + "' '" + folder.string() + "'");
    return time.count();
}

double install() {
    const Places& places = *Places::current;
    const std::string target = places.ours() / "Audio/Plug-Ins/HAL/Tonvale.plugin";
    return milliseconds(target, "printf '\\006' | TONVALE_LOCAL_LIBRARY='" +
                                    places.ours().string() + "' '" + places.tool().string() +
                                    "' i '" + places.plugin().string() + "' '" + target + "'");
}

double copy() {
    const Places& places = *Places::current;
    const std::string target = places.peers() / "Audio/Plug-Ins/HAL/Tonvale.plugin";
    return milliseconds(target, "cp -a '" + places.plugin().string() + "' '" + target +
                                    "' && sync -f '" + target + "'");
}

[[maybe_unused]] const bool added =
    bench::addFigure({.name = "install/copy",
                      .metric = "TNInstaller putting the plug-in on the disk",
                      .unit = "ms",
                      .ours = &install,
                      .peerName = "cp -a, sync -f",
                      .peer = &copy,
                      .surroundings = [] { return std::make_shared<Places>(); }});

} // namespace
