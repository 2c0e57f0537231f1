#include "plugin/programs/ProgramTable.h"

#include "naming/DisambiguatedName.h"
#include "platform/loop/Timer.h"

#include <algorithm>
#include <utility>

ProgramTable::ProgramTable(platform::RunLoop& loop, Listener& listener,
                           Program::Listener& ofPrograms, const ApplicationReports& reports)
    : loop_(loop)
    , listener_(listener)
    , ofPrograms_(ofPrograms)
    , reports_(reports)
    , retry_(std::make_unique<platform::Timer>(loop, [this] { connectMissing(); })) {}

ProgramTable::~ProgramTable() = default;

Program* ProgramTable::find(const std::string& name) const {
    const auto found = std::ranges::find(
        programs_, name, [](const auto& each) -> const auto& { return each->process().name; });
    return found != programs_.end() ? found->get() : nullptr;
}

std::optional<ProgramProcess> ProgramTable::find(const StreamProcess& process) const {
    for (const auto& program : programs_) {
        for (auto& member : program->lifetime().members()) {
            if (member.process.pid == process.pid && member.process.startTime == process.startTime)
                return std::move(member.process);
        }
    }
    return std::nullopt;
}

StreamPlayer ProgramTable::disambiguated(StreamPlayer player) const {
    ProgramProcess& process = player.process;
    if (process.folders.empty())
        return player;
    std::vector<NamedProgram> others;
    for (const auto& program : programs_) {
        const std::string& name = program->process().name;
        if (!isDisambiguatedName(name, process.name, process.folders))
            continue;
        for (auto& member : program->lifetime().members())
            others.push_back({name, std::move(member.process.folders)});
    }
    process.name = disambiguatedName(process.name, process.folders, others);
    if (player.main)
        player.main->name = process.name;
    return player;
}

Program& ProgramTable::join(StreamPlayer player, std::uint32_t client) {
    giveNumber(player.process);
    takeFromOthers(player.process, client);
    if (player.main)
        takeFromOthers(*player.main, client);
    Program* const known = find(player.process.name);
    const ProgramProcess& first = player.main ? *player.main : player.process;
    Program& program = known != nullptr ? *known : add(first);
    using Role = ProgramLifetime::Role;
    if (player.main)
        program.lifetime().join(*player.main, client, Role::main);
    program.lifetime().join(player.process, client, player.main ? Role::helper : Role::main);
    return program;
}

Program& ProgramTable::add(const ProgramProcess& process) {
    Program::Owner& owner = *this;
    Program& program = *programs_.emplace_back(
        std::make_unique<Program>(loop_, process, owner, ofPrograms_, reports_));
    ofPrograms_.programAdded(program);
    // At once if the application is running; during a pause it waits like the others.
    if (!retry_->isActive())
        retry_->start({});
    return program;
}

void ProgramTable::withdraw(Program& program, StreamPlayer player, std::uint32_t client) {
    giveNumber(player.process);
    // The first may be all that held the program.
    program.lifetime().withdraw(player.process, client);
    if (player.main && find(player.main->name) == &program)
        program.lifetime().withdraw(*player.main, client);
}

bool ProgramTable::hasHelpers(const std::string& program) const {
    const Program* const found = find(program);
    return found != nullptr &&
           std::ranges::any_of(found->lifetime().members(),
                               [](const ProgramLifetime::Member& each) {
                                   return each.role == ProgramLifetime::Role::helper;
                               });
}

void ProgramTable::rename(const std::function<StreamPlayer(const ProgramProcess&)>& named) {
    using Role = ProgramLifetime::Role;
    std::vector<std::pair<std::string, ProgramLifetime::Member>> members;
    for (const auto& program : programs_) {
        for (auto& member : program->lifetime().members())
            members.emplace_back(program->process().name, std::move(member));
    }
    // A main process has the name of its helpers.
    std::stable_partition(members.begin(), members.end(),
                          [](const auto& each) { return each.second.role == Role::helper; });
    for (const auto& [name, member] : members) {
        const Program* const program = find(name);
        if (program == nullptr || !program->lifetime().contains(member.process) ||
            (member.role == Role::main && hasHelpers(name)))
            continue;
        StreamPlayer player = named(member.process);
        if (player.process.name == name)
            continue;
        join(std::move(player), member.client);
        if (Program* const last = find(name))
            last->lifetime().release(member.process, member.client);
    }
}

void ProgramTable::clientGone(std::uint32_t client) {
    for (Program* const program : all())
        program->lifetime().clientGone(client);
}

void ProgramTable::giveNumber(ProgramProcess& process) {
    if (process.pid == 0)
        process.pid = numbers_.take(process.name);
}

/// Drops an earlier process of its number too.
void ProgramTable::takeFromOthers(const ProgramProcess& process, std::uint32_t client) {
    for (Program* const program : all())
        program->lifetime().endPredecessor(process);
    for (Program* const program : all()) {
        if (program->process().name != process.name)
            program->lifetime().release(process, client);
    }
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
    numbers_.release(program.process().name);
    std::erase_if(programs_, [&program](const auto& each) { return each.get() == &program; });
    if (programs_.empty())
        retry_->stop();
}

void ProgramTable::programDisconnected(Program&) {
    if (!retry_->isActive())
        retry_->start(pauses_.next());
    listener_.connectionsChanged();
}
