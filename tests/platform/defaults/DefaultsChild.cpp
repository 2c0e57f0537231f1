// A program that changes user defaults, for tests that kill it or run two of it:
//
//     defaults_child numbers PATH             counts up for ever, saves and prints each number
//     defaults_child keys PATH PREFIX COUNT   sets and saves keys of its own, one by one

#include "DefaultsContent.h"
#include "platform/defaults/UserDefaults.h"

#include <cstdio>
#include <string_view>

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
    return 2;
}
