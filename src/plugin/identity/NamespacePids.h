#pragma once

#include <sys/types.h>
#include <unordered_map>
#include <vector>

/// Finds processes by the pid that they have in their own namespace, which differs from ours in a
/// nested pid namespace. Caches that pid of each process, so known processes are cheap. One thread
/// at a time.
class NamespacePids {
  public:
    /// The processes, as pids in our namespace, that currently have this pid in their own, as far
    /// as visible; in any order.
    std::vector<pid_t> find(pid_t own);

  private:
    struct Known {
        ino_t file; ///< inode of its folder in /proc, which differs for a later process with the
                    ///< same pid
        pid_t own;
    };

    std::unordered_map<pid_t, Known> known_; // all processes of the last call
};
