// A program that changes user defaults, for tests that kill it or run two of it:
//
//     defaults_child numbers PATH             counts up for ever, saves and prints each number
//     defaults_child keys PATH PREFIX COUNT   sets and saves keys of its own, one by one
//     defaults_child limited PATH             meets a full disk, which gets space again

#include "DefaultsContent.h"
#include "platform/values/UserDefaults.h"

#include <csignal>
#include <cstdio>
#include <string_view>
#include <sys/resource.h>

namespace {

int countUp(platform::UserDefaults& defaults) {
    for (qlonglong number = defaults.integer("number") + 1;; ++number) {
        defaults.set("number", number);
        defaults.set("text", defaultsContent(number));
        if (!defaults.synchronize())
            return 1;
        std::printf("%lld\n", number);
        std::fflush(stdout);
    }
}

int setKeys(platform::UserDefaults& defaults, const QString& prefix, int count) {
    for (int i = 0; i < count; ++i) {
        defaults.set(prefix + QString::number(i), i);
        if (!defaults.synchronize())
            return 1;
    }
    return 0;
}

void limitFiles(rlim_t bytes) {
    const rlimit limit{bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

int meetFullDisk(platform::UserDefaults& defaults) {
    std::signal(SIGXFSZ, SIG_IGN);
    limitFiles(1000);
    defaults.set("large", QString(5000, 'x'));
    const bool isSavedToFullDisk = defaults.synchronize();
    limitFiles(RLIM_INFINITY);
    std::printf("full %d, free %d\n", isSavedToFullDisk, defaults.synchronize());
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc > 2 ? argv[1] : "";
    if (mode.empty())
        return 2;
    platform::UserDefaults defaults(argv[2]);
    if (mode == "numbers")
        return countUp(defaults);
    if (mode == "keys" && argc == 5)
        return setKeys(defaults, argv[3], std::atoi(argv[4]));
    return mode == "limited" ? meetFullDisk(defaults) : 2;
}
