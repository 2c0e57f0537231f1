#include "WireScene.h"

#include "comm/MVCommunication.h"

#include <QString>

#include <algorithm>
#include <fstream>

namespace bench {

void Told::expect(const WirePlugins& plugins) {
    if (messages != plugins.sent() || levels != plugins.sentLevels())
        throw std::runtime_error(std::to_string(messages) + " messages of " +
                                 std::to_string(plugins.sent()) + " have come, or other ones");
}

void Told::take(const MVCommActivityMessage* message) {
    if (message->level > 0.0F) {
        const std::size_t count = messages.load(std::memory_order_relaxed) + 1;
        levels += static_cast<double>(message->level);
        messages.store(count, std::memory_order_release);
        if (count == awaited)
            reached();
    } else if (++silences == awaitedSilences) {
        reached();
    }
}

void Log::expectLines(std::size_t expected) const {
    std::ifstream file(path_);
    std::size_t count = 0;
    for (std::string line; std::getline(file, line);)
        count += line.find("' connected (pid=") != std::string::npos &&
                         line.ends_with(std::to_string(count) + "')")
                     ? 1U
                     : 0U;
    if (count != expected)
        throw std::runtime_error(std::to_string(count) + " lines of " + std::to_string(expected) +
                                 " are in the log");
}

Ours::Ours(const std::string& path, MVCommCallbacks& callbacks, Log* log)
    : server_(MVCommunication::create(callbacks, QString::fromStdString(path))) {
    if (server_ == nullptr)
        throw std::runtime_error("the server cannot serve " + path);
    server_->setAllowFrequentMessages(true);
    if (log != nullptr)
        application_.emplace().setLogHandle(log->release());
}

std::size_t Ours::checkedIn() const {
    return static_cast<std::size_t>(
        std::ranges::count_if(server_->connectionProcesses(),
                              [](const auto& process) { return !process.name.isNull(); }));
}

void Ours::sendMessage(const MVCommConsoleMessage& message) {
    server_->sendMessage(&message);
}

Watchdog::Watchdog(std::function<void()> bite)
    : thread_([isOver = isOver_.get_future(), bite = std::move(bite)] {
        constexpr std::chrono::seconds patience{60};
        if (isOver.wait_for(patience) != std::future_status::ready)
            bite();
    }) {}

Watchdog::~Watchdog() {
    isOver_.set_value();
    thread_.join();
}

double cpuOf(const std::function<void()>& work) {
    const double before = cpuTime(CLOCK_THREAD_CPUTIME_ID);
    work();
    return cpuTime(CLOCK_THREAD_CPUTIME_ID) - before;
}

double cpuTime(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) * 1e9 + static_cast<double>(time.tv_nsec);
}

} // namespace bench
