#include "plugin/host/PluginHost.h"

#include "platform/crash/CrashFolder.h"
#include "platform/processes/ProcessInfo.h"
#include "plugin/programs/StreamRules.h"

#include <utility>
#include <vector>

namespace {

/// A session manager that starts publishes this, and a moment later gives all streams the volumes
/// that it remembers: one for all programs with the same role, say.
bool tellsOfSessionManager(const AudioGlobal& global) {
    return global.kind == AudioGlobal::Kind::metadata &&
           global.property("metadata.name") == "default";
}

/// Whether what was found out before is a process that is certain, and still the same.
bool isThere(const ProgramProcess& process) {
    return process.startTime &&
           platform::processStartTime(static_cast<pid_t>(process.pid)) == process.startTime;
}

bool isThere(const std::optional<StreamPlayer>& player) {
    return player && isThere(player->process) && (!player->main || isThere(*player->main));
}

} // namespace

PluginHost::PluginHost(platform::RunLoop& loop, ApplicationReports reports)
    : loop_(loop)
    , reports_(std::move(reports))
    , identifier_(loop, [this] { identifyAgain(); })
    , memory_(PreferencesFile::standard(), programs_, effects_, reports_,
              [this](const std::string& language) { identifier_.setLanguage(language); })
    , programs_(loop, *this, memory_, reports_)
    , effects_(loop, programs_)
    , server_(loop, *this)
    , writer_(loop, server_, graph_)
    , levels_(loop, graph_, programs_) {
    memory_.begin();
    server_.start();
}

PluginHost::~PluginHost() {
    for (const auto& [id, entry] : streams_)
        entry.stream->finish();
    server_.serveUntil([this] { return writer_.settle(); });
    PluginHost::serverLost();
}

PluginStatus PluginHost::status() const {
    PluginStatus status{server_.core() != nullptr,
                        {},
                        memory_.fileThatCounts(),
                        memory_.ownFile(),
                        platform::crashFolder()};
    for (const auto& program : programs_.programs()) {
        ProgramStatus& entry = status.programs.emplace_back(ProgramStatus{program->process(),
                                                                          program->wanted(),
                                                                          memory_.of(*program),
                                                                          program->isConnected(),
                                                                          {},
                                                                          program->isIgnored(),
                                                                          program->obstacle()});
        for (const AudioStream* const stream : program->streams())
            entry.streams.push_back({stream->id(), stream->isRunning(), stream->wanted(),
                                     stream->props(), stream->ownVolume()});
    }
    return status;
}

void PluginHost::serverConnected() {
    identifier_.prepare(); // a new stream is waited for by its first samples
    levels_.attach(*server_.core());
    effects_.serverConnected();
    writer_.prepare();
    memory_.effectsAdded();
}

void PluginHost::serverLost() {
    levels_.detach();
    for (auto& [id, entry] : streams_)
        release(entry);
    streams_.clear();
    writer_.clear();
    while (!clients_.empty())
        dropClient(clients_.begin()->first);
    effects_.serverLost();
    graph_.clear();
}

void PluginHost::globalAdded(const AudioGlobal& global) {
    globalRemoved(global.id);
    graph_.add(global);
    effects_.globalAdded(*server_.registry(), global);
    if (global.kind == AudioGlobal::Kind::node && graph_.isOutputStream(global.id)) {
        AudioStream::Listener& listener = *this;
        streams_[global.id].stream = std::make_unique<AudioStream>(
            loop_, server_, writer_, global.id,
            server_.hasListedAll() ? AudioStream::Origin::appeared : AudioStream::Origin::existed,
            listener);
        watchOwner(global.id);
    } else if (global.kind == AudioGlobal::Kind::client) {
        clients_[global.id].appeared = platform::ticksSinceBoot();
        for (const auto& [id, entry] : streams_)
            watchOwner(id);
    } else if (tellsOfSessionManager(global) && server_.hasListedAll()) {
        for (const auto& [id, entry] : streams_)
            entry.stream->uphold();
    }
    levels_.review();
}

void PluginHost::globalRemoved(std::uint32_t id) {
    graph_.remove(id);
    effects_.globalRemoved(id);
    const auto entry = streams_.find(id);
    if (entry != streams_.end()) {
        release(entry->second);
        streams_.erase(entry);
    }
    dropClient(id);
    levels_.review();
}

void PluginHost::dropClient(std::uint32_t id) {
    if (clients_.erase(id) > 0)
        programs_.clientGone(id);
}

void PluginHost::watchOwner(std::uint32_t stream) {
    const auto owner = graph_.clientOf(stream);
    const auto client = owner ? clients_.find(*owner) : clients_.end();
    if (client == clients_.end() || client->second.watched != nullptr)
        return;
    AudioClient::Listener& listener = *this;
    client->second.watched = std::make_unique<AudioClient>(*server_.registry(), *owner,
                                                           client->second.appeared, listener);
}

void PluginHost::clientDescribed(AudioClient& client) {
    for (auto& [id, entry] : streams_) {
        if (graph_.clientOf(id) == client.id())
            identify(entry);
    }
    levels_.review();
}

void PluginHost::streamDescribed(AudioStream& stream) {
    identify(streams_.at(stream.id()));
    levels_.review();
}

void PluginHost::streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) {
    const StreamEntry& changed = streams_.at(stream.id());
    Program* const program = changed.program;
    if (program == nullptr)
        return;
    program->changedElsewhere(change);
    haveOthersFollow(changed, change);
    if (program == effects_.program() && !program->isIgnored())
        effects_.changedElsewhere();
}

void PluginHost::haveOthersFollow(const StreamEntry& changed, const WantedVolume& change) {
    if (changed.program->isIgnored())
        return;
    for (const auto& [id, entry] : streams_) {
        const WantedVolume following =
            StreamRules::followingChange(change, changed.player, entry.player);
        if (entry.program == changed.program && !following.isEmpty())
            entry.stream->want(following);
    }
}

void PluginHost::streamFound(AudioStream& stream, const WantedVolume& found) {
    const StreamEntry& entry = streams_.at(stream.id());
    if (entry.program != nullptr)
        memory_.found(*entry.program, StreamRules::lastingPart(found, entry.player));
}

void PluginHost::identify(StreamEntry& entry) {
    if (entry.orphaned)
        return;
    AudioStream& stream = *entry.stream;
    const auto client = graph_.clientOf(stream.id());
    const bool isEffect = isSoundEffect(stream);
    const auto player = isEffect ? std::nullopt : playerOf(stream);
    // The new one first, so that one and the same program does not end in between.
    Program* const next = isEffect ? effects_.program()
                          : player ? &programs_.join(*player, *client)
                                   : nullptr;
    Program* const last = std::exchange(entry.program, nullptr);
    const auto lastPlayer = std::exchange(entry.player, player);
    entry.orphaned = false; // if the last one has just ended
    if (last != nullptr && last != next) {
        last->remove(stream);
        stream.adopt({}); // the found volume is not a user's setting
        stream.release();
    }
    entry.program = next;
    stream.setKind(StreamRules::kindOf(isEffect, player));
    if (next != nullptr && last != next)
        next->add(stream);
    for (Program* const program : {last, next}) {
        if (program != nullptr && last != next)
            program->reviewObstacle();
    }
    if (last != nullptr && lastPlayer)
        programs_.withdraw(*last, *lastPlayer, *client);
}

/// Names may have changed, and with them the programs.
void PluginHost::identifyAgain() {
    for (auto& [id, client] : clients_)
        client.identified = {};
    std::vector<StreamEntry*> moved;
    for (auto& [id, entry] : streams_) {
        if (entry.program == nullptr || !entry.player)
            continue;
        const auto player = playerOf(*entry.stream);
        if (player && player->process.name == entry.program->process().name)
            continue;
        release(entry);
        entry.stream->adopt({}); // the found volume is not a user's setting
        moved.push_back(&entry);
    }
    for (StreamEntry* const entry : moved)
        identify(*entry);
    programs_.rename([this](const ProgramProcess& process) {
        return programs_.disambiguated(identifier_.namedAgain(process));
    });
    levels_.review();
}

bool PluginHost::isSoundEffect(const AudioStream& stream) const {
    return effects_.program() != nullptr && stream.isDescribed() && !stream.isInternal() &&
           StreamRules::isNotification(graph_.roleOf(stream.id()), stream.role());
}

std::optional<StreamPlayer> PluginHost::playerOf(const AudioStream& stream) {
    const auto owner = graph_.clientOf(stream.id());
    const auto client = owner ? clients_.find(*owner) : clients_.end();
    if (client == clients_.end() || client->second.watched == nullptr ||
        !client->second.watched->isDescribed() || !stream.isDescribed() || stream.isInternal())
        return std::nullopt;
    StreamEvidence evidence;
    client->second.watched->describeTo(evidence);
    stream.describeTo(evidence);
    auto& [known, player] = client->second.identified;
    if (known != evidence || !isThere(player)) {
        known = evidence;
        player = named(evidence);
    }
    if (player && StreamRules::mayBeSampleSound(evidence.client.name, player->process) &&
        AppConnection::isServedBy(player->process))
        return std::nullopt;
    return player ? std::optional(programs_.disambiguated(*player)) : std::nullopt;
}

std::optional<StreamPlayer> PluginHost::named(const StreamEvidence& evidence) {
    const auto process = identifier_.processOf(evidence);
    if (!process)
        return std::nullopt;
    // A process has one name, whatever its further clients claim. But any may be the one that plays
    // for pages.
    const auto known = process->startTime ? programs_.find(*process) : std::nullopt;
    const ClientProperties client = clientProperties(evidence);
    StreamPlayer player = identifier_.named(*process, known ? known->client : client);
    player.showsPages = player.showsPages || claimsPages(client);
    return player;
}

void PluginHost::release(StreamEntry& entry) {
    Program* const program = std::exchange(entry.program, nullptr);
    if (program == nullptr)
        return;
    program->remove(*entry.stream);
    program->reviewObstacle();
}

void PluginHost::programGoes(Program& program) {
    if (&program == effects_.program())
        effects_.forgetProgram();
    for (auto& [id, entry] : streams_) {
        if (entry.program != &program)
            continue;
        entry.program = nullptr;
        entry.orphaned = true;
    }
    levels_.review();
}

void PluginHost::streamObstacleChanged(AudioStream& stream) {
    if (Program* const program = streams_.at(stream.id()).program)
        program->reviewObstacle();
}
