#include "support/TestEnvironment.h"

#include <cstdlib>

namespace support {

namespace {

struct FolderVariable {
    const char* variable;
    const char* folder;
};

constexpr FolderVariable folderVariables[] = {
    {"XDG_CONFIG_HOME", "config"},
    {"XDG_DATA_HOME", "data"},
    {"XDG_STATE_HOME", "state"},
    {"XDG_CACHE_HOME", "cache"},
    {"XDG_RUNTIME_DIR", "run"},
    {"TMPDIR", "tmp"},
    {"TONVALE_SOCKET_DIR", "sockets"},
    {"TONVALE_LOCAL_LIBRARY", "library"},
    {"TONVALE_LOCAL_APPLICATIONS", "applications"},
};

constexpr const char* unsetVariables[] = {
    "DBUS_SESSION_BUS_ADDRESS",
    "DISPLAY",
    "WAYLAND_DISPLAY",
    "PULSE_SERVER",
    "PULSE_RUNTIME_PATH",
    "PULSE_SINK",
    "PULSE_SOURCE",
    "PIPEWIRE_REMOTE",
    "PIPEWIRE_RUNTIME_DIR",
    "PIPEWIRE_PROPS",
    "QT_QPA_PLATFORMTHEME",
    "QT_STYLE_OVERRIDE",
    "PKEXEC_UID",
    "SUDO_UID",
};

} // namespace

void linkInstalledPlugin(const std::filesystem::path& library) {
    std::filesystem::create_symlink(TONVALE_BUILD_LIBRARY "/Audio", library / "Audio");
}

TestEnvironment::TestEnvironment() {
    ::setenv("HOME", folder_.path().c_str(), 1);
    for (const auto& [variable, folder] : folderVariables) {
        const auto path = folder_.path() / folder;
        std::filesystem::create_directory(path);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
        ::setenv(variable, path.c_str(), 1);
    }
    linkInstalledPlugin(folder_.path() / "library");
    // Unset, it would be the machine's: no test may restart that.
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + (folder_.path() / "none").string()).c_str(),
             1);
    for (const char* variable : unsetVariables)
        ::unsetenv(variable);
    ::setenv("LC_ALL", "C.UTF-8", 1);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
}

} // namespace support
