#include "plugin/programs/ProgramLifetime.h"

#include "platform/processes/ProcessInfo.h"

#include <algorithm>
#include <utility>

ProgramLifetime::ProgramLifetime(platform::RunLoop& loop, std::function<void()> changed)
    : loop_(loop), changed_(std::move(changed)) {}

ProgramLifetime::~ProgramLifetime() = default;

template <typename Condition>
void ProgramLifetime::drop(const Condition& condition) {
    if (std::erase_if(parts_, condition) == 0)
        return;
    const auto call = changed_; // which may destroy this
    call();
}

void ProgramLifetime::join(const ProgramProcess& process, std::uint32_t client, Role role) {
    auto part = find(process, client);
    if (part == parts_.end())
        part = parts_.insert(part, makePart(process, client, role));
    if (role == Role::main)
        part->member.role = role;
    ++part->streams;
}

void ProgramLifetime::withdraw(const ProgramProcess& process, std::uint32_t client) {
    const auto part = find(process, client);
    if (part == parts_.end())
        return;
    --part->streams;
    drop([](const Part& each) { return each.streams == 0; });
}

void ProgramLifetime::release(const ProgramProcess& process, std::uint32_t client) {
    drop([&](const Part& part) { return isOf(part, process, client); });
}

void ProgramLifetime::endPredecessor(const ProgramProcess& process) {
    drop([&process](const Part& part) {
        return part.member.process.pid == process.pid &&
               !part.member.process.isSameProcess(process);
    });
}

void ProgramLifetime::clientGone(std::uint32_t client) {
    drop(
        [client](const Part& part) { return part.endsWithClient && part.member.client == client; });
}

bool ProgramLifetime::contains(const ProgramProcess& process) const {
    return std::ranges::any_of(
        parts_, [&](const Part& part) { return part.member.process.isSameProcess(process); });
}

const ProgramProcess* ProgramLifetime::first() const noexcept {
    const auto main =
        std::ranges::find(parts_, Role::main, [](const Part& part) { return part.member.role; });
    const auto found = main != parts_.end() ? main : parts_.begin();
    return found != parts_.end() ? &found->member.process : nullptr;
}

std::vector<ProgramLifetime::Member> ProgramLifetime::members() const {
    std::vector<Member> members;
    for (const Part& part : parts_)
        members.push_back(part.member);
    return members;
}

bool ProgramLifetime::isOf(const Part& part, const ProgramProcess& process, std::uint32_t client) {
    return part.member.process.isSameProcess(process) &&
           (!part.endsWithClient || part.member.client == client);
}

std::vector<ProgramLifetime::Part>::iterator ProgramLifetime::find(const ProgramProcess& process,
                                                                   std::uint32_t client) {
    return std::ranges::find_if(parts_,
                                [&](const Part& part) { return isOf(part, process, client); });
}

ProgramLifetime::Part ProgramLifetime::makePart(const ProgramProcess& process, std::uint32_t client,
                                                Role role) {
    Part part{{process, role, client}, false, nullptr, 0};
    const auto pid = static_cast<pid_t>(process.pid);
    if (process.startTime)
        part.watch = platform::ProcessWatch::create(loop_, pid, [this, process] {
            drop([&process](const Part& each) {
                return each.member.process.isSameProcess(process);
            });
        });
    // The pid may have been reused just before the watch began.
    if (part.watch != nullptr && platform::processStartTime(pid) != process.startTime)
        part.watch.reset();
    part.endsWithClient = part.watch == nullptr;
    return part;
}
