#include "Harness.h"

#include <QApplication>

#include <cstdio>

// tonvale_bench [--out FILE] [FILTER]
int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    std::string resultFile = "results.json";
    std::string filter;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--out" && i + 1 < argc) {
            resultFile = argv[++i];
        } else if (!argument.starts_with('-') && filter.empty()) {
            filter = argument;
        } else {
            std::fprintf(stderr, "usage: tonvale_bench [--out FILE] [FILTER]\n");
            return 2;
        }
    }
    return bench::run(filter, resultFile) ? 0 : 1;
}
