#pragma once

#include <sys/types.h>
#include <unordered_map>
#include <vector>

/// Finds processes by the number that they have for themselves, which is another than ours in a pid
/// namespace inside our own. Remembers that number of each process: one that was there the last
/// time costs no more than its place in the list of all. One thread at a time.
class NamespacePids {
  public:
    /// The processes, as we count, that have this number for themselves now, as far as we can see;
    /// in any order.
    std::vector<pid_t> find(pid_t own);

  private:
    struct Known {
        ino_t
            file; ///< of its folder in /proc, where a later process of the same number has another
        pid_t own;
    };

    std::unordered_map<pid_t, Known> known_; // all processes of the last time
};
