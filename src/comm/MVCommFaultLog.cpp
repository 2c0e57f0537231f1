#include "comm/MVCommFaultLog.h"

#include <utility>

namespace {

constexpr std::size_t mostLines = 10;
constexpr std::chrono::seconds length{1};

} // namespace

MVCommFaultLog::MVCommFaultLog(platform::RunLoop& loop,
                               std::function<void(std::size_t)> tellLeftOut)
    : tellLeftOut_(std::move(tellLeftOut)), second_(loop, [this] { tell(); }) {}

MVCommFaultLog::~MVCommFaultLog() {
    tell();
}

bool MVCommFaultLog::allowsLine() {
    if (!second_.isActive())
        second_.start(length);
    return ++lines_ <= mostLines;
}

void MVCommFaultLog::tell() {
    if (const std::size_t lines = std::exchange(lines_, 0); lines > mostLines)
        tellLeftOut_(lines - mostLines);
}
