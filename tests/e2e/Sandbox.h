#pragma once

#include "support/ChildProcess.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <sys/types.h>
#include <vector>

// Programs in namespaces of their own, as sandboxes run them.

using Arguments = std::vector<std::string>;

inline bool mayMakeNamespaces() {
    return support::runCommand({"unshare", "--user", "--map-root-user", "--mount", "--pid",
                                "--fork", "--mount-proc", "true"})
               .status == 0;
}

/// The command in its own pid namespace, where it is number 1, behind the process of unshare.
inline Arguments inOwnNamespace(const Arguments& command) {
    Arguments whole{"unshare", "--user", "--map-root-user", "--mount",
                    "--pid",   "--fork", "--kill-child",    "--mount-proc"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

/// The command as a flatpak runs it: in a pid namespace, and with the description of the
/// application in its root folder, which is otherwise like ours. `root` is an empty folder.
inline Arguments asFlatpak(const std::string& application, const std::filesystem::path& root,
                           const Arguments& command) {
    const char* const script = R"(
        set -e
        mount -t tmpfs sandbox "$1"
        printf '[Application]\nname=%s\n' "$2" >"$1/.flatpak-info"
        for entry in /*; do
            if [ -L "$entry" ]; then
                cp -P "$entry" "$1$entry"
            elif [ -d "$entry" ]; then
                mkdir "$1$entry"
                mount --rbind "$entry" "$1$entry"
            fi
        done
        root=$1
        shift 2
        exec chroot "$root" "$@")";
    Arguments whole{"sh", "-c", script, "sh", root, application};
    whole.insert(whole.end(), command.begin(), command.end());
    return inOwnNamespace(whole);
}

/// The number of the only child of a process; 0 when there is none. The program behind an unshare
/// that began it.
inline pid_t childOf(pid_t process) {
    const std::string number = std::to_string(process);
    std::ifstream children("/proc/" + number + "/task/" + number + "/children");
    pid_t child = 0;
    children >> child;
    return child;
}
