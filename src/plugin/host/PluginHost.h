#pragma once

#include "plugin/connection/ApplicationReports.h"
#include "plugin/effects/SoundEffects.h"
#include "plugin/host/PluginStatus.h"
#include "plugin/identity/ProgramIdentifier.h"
#include "plugin/levels/LevelReporter.h"
#include "plugin/memory/VolumeMemory.h"
#include "plugin/programs/ProgramTable.h"
#include "plugin/server/AudioClient.h"
#include "plugin/server/AudioGraph.h"
#include "plugin/server/AudioServer.h"
#include "plugin/server/AudioStream.h"
#include "plugin/server/NodeWriter.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>

/// The plug-in: finds the programs that play, connects to the application on behalf of each, and
/// passes volumes and levels between the two. Only connects the parts; makes no decisions. The run
/// loop's thread only.
class PluginHost : private AudioServer::Listener,
                   private AudioClient::Listener,
                   private AudioStream::Listener,
                   private ProgramTable::Listener {
  public:
    /// Starts with the loop's next turn; reads the preferences at once. The main queue must be
    /// served, or changes of the preferences are not noticed. Throws std::runtime_error if the
    /// PipeWire library cannot be used.
    explicit PluginHost(platform::RunLoop& loop, ApplicationReports reports = {});
    ~PluginHost() override;
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    /// For who hears elsewhere of the application, or that the machine has slept.
    ProgramTable& programs() noexcept { return programs_; }
    VolumeMemory& memory() noexcept { return memory_; }
    LevelReporter& levels() noexcept { return levels_; }

    /// The current state.
    [[nodiscard]] PluginStatus status() const;

  private:
    /// A stream with its program, which is null until it is identified, and again when its process
    /// has ended.
    struct StreamEntry {
        std::unique_ptr<AudioStream> stream;
        Program* program = nullptr;
        std::optional<StreamPlayer> player; // with which it joined the program
        bool orphaned = false;
    };

    /// A client, watched from its first stream on.
    struct Client {
        std::uint64_t appeared; // in ticks since boot
        std::unique_ptr<AudioClient> watched;

        /// The last identification, since all streams of a client usually have the same evidence.
        struct {
            StreamEvidence evidence;
            std::optional<StreamPlayer> player;
        } identified;
    };

    void serverConnected() override;
    void serverLost() override;
    void globalAdded(const AudioGlobal& global) override;
    void globalRemoved(std::uint32_t id) override;
    void clientDescribed(AudioClient& client) override;
    void streamDescribed(AudioStream& stream) override;
    void streamStateChanged(AudioStream&) override { levels_.review(); }
    void streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) override;
    void streamFound(AudioStream& stream, const WantedVolume& found) override;
    void streamObstacleChanged(AudioStream& stream) override;
    void programGoes(Program& program) override;
    void connectionsChanged() override { levels_.review(); }

    void dropClient(std::uint32_t id);
    void watchOwner(std::uint32_t stream);
    void haveOthersFollow(const StreamEntry& changed, const WantedVolume& change);
    void identify(StreamEntry& entry);
    void identifyAgain();
    std::optional<StreamPlayer> playerOf(const AudioStream& stream);
    std::optional<StreamPlayer> named(const StreamEvidence& evidence);
    bool isSoundEffect(const AudioStream& stream) const;
    void release(StreamEntry& entry);

    platform::RunLoop& loop_;
    const ApplicationReports reports_;
    AudioGraph graph_;
    std::map<std::uint32_t, Client> clients_;
    std::map<std::uint32_t, StreamEntry> streams_; // by node
    ProgramIdentifier identifier_;
    VolumeMemory memory_; // which the programs tell of themselves
    ProgramTable programs_;
    SoundEffects effects_;
    AudioServer server_;
    NodeWriter writer_;    // goes before the server
    LevelReporter levels_; // goes before the server
};
