#include "framework/async/ExceptionLine.h"

#include <cstdio>
#include <exception>

namespace QN::async {

void printCurrentException(int line) noexcept {
    try {
        throw;
    } catch (const std::exception& exception) {
        std::printf("Exception @ %d: %s\n", line, exception.what());
    } catch (...) {
        std::printf("Unknown exception @ %d\n", line);
    }
    std::fflush(stdout);
}

} // namespace QN::async
