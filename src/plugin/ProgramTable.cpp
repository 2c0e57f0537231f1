#include "plugin/ProgramTable.h"

#include "platform/loop/Timer.h"

#include <algorithm>

ProgramTable::ProgramTable(platform::RunLoop& loop, Listener& listener)
    : loop_(loop)
    , listener_(listener)
    , retry_(std::make_unique<platform::Timer>(loop, [this] { connectMissing(); })) {}

ProgramTable::~ProgramTable() = default;

Program& ProgramTable::join(platform::StreamProcess process, std::uint32_t client) {
    giveNumber(process);
    endPredecessors(process);
    const auto known =
        std::find_if(programs_.begin(), programs_.end(), [&process](const auto& program) {
            return program->process().identity == process.identity;
        });
    if (known != programs_.end()) {
        (*known)->life().join(process, client);
        return **known;
    }
    Program& program = add(process);
    program.life().join(process, client);
    return program;
}

Program& ProgramTable::add(const platform::StreamProcess& process) {
    Program::Listener& listener = *this;
    Program& program = *programs_.emplace_back(std::make_unique<Program>(loop_, process, listener));
    listener_.programAdded(program);
    // At once when the application is there; during a pause the others wait for it as well.
    if (!retry_->isActive())
        retry_->start({});
    return program;
}

void ProgramTable::withdraw(Program& program, platform::StreamProcess process,
                            std::uint32_t client) {
    giveNumber(process);
    program.life().withdraw(process, client);
}

void ProgramTable::clientGone(std::uint32_t client) {
    for (Program* const program : all())
        program->life().clientGone(client);
}

void ProgramTable::giveNumber(platform::StreamProcess& process) {
    if (process.isPseudo())
        process.pid = numbers_.take(process.identity, process.pid);
}

/// Their number has gone to this process.
void ProgramTable::endPredecessors(const platform::StreamProcess& process) {
    for (Program* const program : all())
        program->life().endPredecessor(process);
}

std::vector<Program*> ProgramTable::all() const {
    std::vector<Program*> programs;
    for (const auto& program : programs_)
        programs.push_back(program.get());
    return programs;
}

void ProgramTable::connectNow() {
    pauses_.reset();
    connectMissing();
}

void ProgramTable::connectMissing() {
    bool allConnected = true;
    for (const auto& program : programs_) {
        const bool before = program->isConnected();
        const bool connected = program->connect();
        allConnected = allConnected && connected;
        // The application is there; what it has no room for yet need not wait long.
        if (connected && !before)
            pauses_.reset();
    }
    if (allConnected)
        retry_->stop();
    else
        retry_->start(pauses_.next());
    listener_.connectionsChanged();
}

void ProgramTable::programEnded(Program& program) {
    listener_.programGoes(program);
    numbers_.release(program.process().identity);
    std::erase_if(programs_, [&program](const auto& each) { return each.get() == &program; });
    if (programs_.empty())
        retry_->stop();
}

void ProgramTable::programDisconnected(Program&) {
    if (!retry_->isActive())
        retry_->start(pauses_.next());
    listener_.connectionsChanged();
}
