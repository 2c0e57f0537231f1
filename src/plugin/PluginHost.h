#pragma once

#include "plugin/AudioGraph.h"
#include "plugin/AudioServer.h"
#include "plugin/AudioStream.h"
#include "plugin/LevelMeter.h"
#include "plugin/ProgramTable.h"

#include <map>
#include <memory>
#include <set>

/// The plug-in: finds out which programs play, stands for each of them at the application, and
/// carries volumes and levels between the two. Wires the parts together; decides nothing. The run
/// loop's thread only.
class PluginHost : private AudioServer::Listener,
                   private AudioStream::Listener,
                   private ProgramTable::Listener {
  public:
    /// Begins its work with the loop's next turn. Throws std::runtime_error when the PipeWire
    /// library cannot be used.
    explicit PluginHost(platform::RunLoop& loop);
    ~PluginHost() override;
    PluginHost(const PluginHost&) = delete;
    PluginHost& operator=(const PluginHost&) = delete;

    /// The application says that it has just been started.
    void applicationLaunched() { programs_.connectNow(); }

  private:
    /// A stream and whose it is: nobody's until it is identified, and again when its process ended.
    struct Voice {
        std::unique_ptr<AudioStream> stream;
        Program* program = nullptr;
        bool orphaned = false;
    };

    void serverConnected() override;
    void serverLost() override;
    void globalAdded(const AudioGlobal& global) override;
    void globalRemoved(std::uint32_t id) override;
    void streamDescribed(AudioStream& stream) override;
    void streamStateChanged(AudioStream& stream) override;
    void streamChangedElsewhere(AudioStream& stream, const WantedVolume& change) override;
    void programGoes(Program& program) override;
    void connectionsChanged() override;

    void forgetServer();
    void identify(Voice& voice);
    void release(Voice& voice);
    void planMeters();
    void reportLevels();
    bool isAnythingToReport() const;
    void updateReporting();

    platform::RunLoop& loop_;
    AudioGraph graph_;
    std::map<std::uint32_t, Voice> voices_; // by node
    const std::unique_ptr<platform::Timer> plan_;
    const std::unique_ptr<platform::Timer> report_;
    ProgramTable programs_;
    AudioServer server_;
    std::unique_ptr<LevelMeter> meter_; // while there is a server
};
