#include "platform/processes/IndependentProgram.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <unistd.h>

namespace platform {

namespace {

/// What posix_spawn() needs, freed at the end.
class SpawnPlan {
  public:
    SpawnPlan() {
        ::posix_spawnattr_init(&attributes);
        ::posix_spawn_file_actions_init(&files);
    }
    ~SpawnPlan() {
        ::posix_spawnattr_destroy(&attributes);
        ::posix_spawn_file_actions_destroy(&files);
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t files{};
};

void makeIndependent(SpawnPlan& plan) {
    sigset_t all;
    sigset_t none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&plan.attributes, &all);
    ::posix_spawnattr_setsigmask(&plan.attributes, &none);
    ::posix_spawnattr_setflags(&plan.attributes,
                               POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        ::posix_spawn_file_actions_addopen(&plan.files, standard, "/dev/null", O_RDWR, 0);
    ::posix_spawn_file_actions_addclosefrom_np(&plan.files, STDERR_FILENO + 1);
    ::posix_spawn_file_actions_addchdir_np(&plan.files, "/");
}

} // namespace

int startIndependently(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    std::vector<char*> vector;
    vector.reserve(words.size() + 1);
    for (std::string& word : words)
        vector.push_back(word.data());
    vector.push_back(nullptr);
    SpawnPlan plan;
    makeIndependent(plan);
    pid_t process = 0;
    return ::posix_spawn(&process, vector[0], &plan.files, &plan.attributes, vector.data(),
                         environ);
}

} // namespace platform
