#include "support/ListeningApplication.h"

#include "comm/MVCommConnectedProcess.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace support {

ListeningApplication* ListeningApplication::current_ = nullptr;

ListeningApplication::ListeningApplication() {
    current_ = this;
    EXPECT_TRUE(comm_.setupPluginConnectionWithCallBack(&record));
    comm_.setAllowFrequentMessages(true);
}

ListeningApplication::~ListeningApplication() {
    comm_.shutdown();
    current_ = nullptr;
}

void ListeningApplication::record(const MVCommActivityMessage* message) {
    current_->levels_[message->pid].push_back({platform::MonotonicClock::now(), message->level});
}

QList<MVCommConnectionProcess> ListeningApplication::programs() const {
    auto programs = comm_.connectionProcesses();
    programs.removeIf([](const auto& program) {
        return program.name.isNull() || program.name == kMVCommAudioDaemonName;
    });
    return programs;
}

std::optional<MVCommConnectionProcess> ListeningApplication::program(const QString& name) const {
    auto programs = comm_.connectionProcesses();
    programs.removeIf([&name](const auto& program) { return program.name != name; });
    return programs.size() == 1 ? std::optional(programs.front()) : std::nullopt;
}

void ListeningApplication::send(std::int32_t type, std::uint32_t pid, std::int32_t value) {
    const MVCommConsoleMessage message{type, static_cast<std::int32_t>(pid), 0, value};
    comm_.sendMessage(&message);
}

} // namespace support
