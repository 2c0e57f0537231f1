#include "plugin/ProgramTable.h"

#include "platform/Timer.h"

#include <algorithm>

ProgramTable::ProgramTable(platform::RunLoop& loop, Listener& listener)
    : loop_(loop)
    , listener_(listener)
    , retry_(std::make_unique<platform::Timer>(loop, [this] { connectMissing(); })) {}

ProgramTable::~ProgramTable() = default;

Program& ProgramTable::programOf(const platform::StreamProcess& process) {
    const auto known =
        std::find_if(programs_.begin(), programs_.end(), [&process](const auto& program) {
            return program->process().pid == process.pid;
        });
    if (known != programs_.end()) {
        if ((*known)->process().startTime == process.startTime)
            return **known;
        programEnded(**known); // the number has gone to another process
    }
    Program::Listener& listener = *this;
    Program& program = *programs_.emplace_back(std::make_unique<Program>(loop_, process, listener));
    // At once when the application is there; during a pause the others wait for it as well.
    if (!retry_->isActive())
        retry_->start({});
    return program;
}

void ProgramTable::dropUnlessHeld(Program& program) {
    if (!program.isWatched() && program.streams().empty())
        programEnded(program);
}

void ProgramTable::connectNow() {
    pauses_.reset();
    connectMissing();
}

void ProgramTable::connectMissing() {
    bool connected = true;
    for (const auto& program : programs_) {
        const bool before = program->isConnected();
        connected = program->connect();
        if (!connected)
            break;
        // The application is there; what it has no room for yet need not wait long.
        if (!before)
            pauses_.reset();
    }
    if (connected)
        retry_->stop();
    else
        retry_->start(pauses_.next());
    listener_.connectionsChanged();
}

void ProgramTable::programEnded(Program& program) {
    listener_.programGoes(program);
    std::erase_if(programs_, [&program](const auto& each) { return each.get() == &program; });
    if (programs_.empty())
        retry_->stop();
}

void ProgramTable::programCommanded(Program& program, const WantedVolume& change) {
    listener_.programCommanded(program, change);
}

void ProgramTable::programDisconnected(Program&) {
    if (!retry_->isActive())
        retry_->start(pauses_.next());
    listener_.connectionsChanged();
}
