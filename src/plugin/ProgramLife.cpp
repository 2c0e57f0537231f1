#include "plugin/ProgramLife.h"

#include "platform/processes/ProcessInfo.h"

#include <algorithm>
#include <utility>

namespace {

bool isSame(const platform::StreamProcess& a, const platform::StreamProcess& b) noexcept {
    return a.pid == b.pid && a.startTime == b.startTime;
}

} // namespace

ProgramLife::ProgramLife(platform::RunLoop& loop, std::function<void()> changed)
    : loop_(loop), changed_(std::move(changed)) {}

ProgramLife::~ProgramLife() = default;

template <typename Condition>
void ProgramLife::drop(const Condition& condition) {
    if (std::erase_if(parts_, condition) == 0)
        return;
    const auto call = changed_; // which may destroy this
    call();
}

void ProgramLife::join(const platform::StreamProcess& process, std::uint32_t client) {
    auto part = find(process, client);
    if (part == parts_.end())
        part = parts_.insert(part, makePart(process, client));
    ++part->streams;
}

void ProgramLife::withdraw(const platform::StreamProcess& process, std::uint32_t client) {
    const auto part = find(process, client);
    if (part == parts_.end())
        return;
    --part->streams;
    drop([](const Part& each) { return each.streams == 0; });
}

void ProgramLife::endPredecessor(const platform::StreamProcess& process) {
    drop([&process](const Part& part) {
        return part.process.pid == process.pid && !isSame(part.process, process);
    });
}

void ProgramLife::clientGone(std::uint32_t client) {
    drop([client](const Part& part) { return part.client == client; });
}

const platform::StreamProcess* ProgramLife::first() const noexcept {
    return parts_.empty() ? nullptr : &parts_.front().process;
}

std::vector<ProgramLife::Part>::iterator ProgramLife::find(const platform::StreamProcess& process,
                                                           std::uint32_t client) {
    return std::find_if(parts_.begin(), parts_.end(), [&](const Part& part) {
        return isSame(part.process, process) && part.client.value_or(client) == client;
    });
}

ProgramLife::Part ProgramLife::makePart(const platform::StreamProcess& process,
                                        std::uint32_t client) {
    Part part{process, std::nullopt, nullptr, 0};
    const auto pid = static_cast<pid_t>(process.pid);
    if (process.startTime)
        part.watch = platform::ProcessWatch::create(loop_, pid, [this, process] {
            drop([&process](const Part& each) { return isSame(each.process, process); });
        });
    // The number may have gone to another process just before the watch began.
    if (part.watch != nullptr && platform::processStartTime(pid) != process.startTime)
        part.watch.reset();
    if (part.watch == nullptr)
        part.client = client;
    return part;
}
