#pragma once

#include "plugin/effects/RouteSettings.h"
#include "plugin/effects/RouteVolumePolicy.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

struct AudioGlobal;
class Program;
class ProgramTable;

namespace platform {
class RunLoop;
class Timer;
} // namespace platform

/// The notification sounds of all programs: for a person one program more, which has the process of
/// the sound server and is there as long as that is. Each of them is over before its volume could
/// be set, so the session manager is told beforehand. The run loop's thread only.
class SoundEffects {
  public:
    SoundEffects(platform::RunLoop& loop, ProgramTable& programs);
    ~SoundEffects();
    SoundEffects(const SoundEffects&) = delete;
    SoundEffects& operator=(const SoundEffects&) = delete;

    void serverConnected();

    /// Drops the program, which must have no streams any more, and what belongs to the connection.
    void serverLost();

    /// Null while there is no server.
    Program* program() const noexcept { return program_; }

    /// To be called when the program table drops the program.
    void forgetProgram() noexcept { program_ = nullptr; }

    /// To be told of every object of the server, of which the session manager's settings are
    /// watched: of several that claim to be these, the first for as long as it is there, then the
    /// next. `registry` is that of the connection and must last until serverLost().
    void globalAdded(pw_registry& registry, const AudioGlobal& global);

    /// Numbers that are unknown are no concern.
    void globalRemoved(std::uint32_t id);

    /// Another volume has been asked for, so that `all` is wanted of the program.
    void asked(const WantedVolume& all);

    /// Another mixer has changed one that sounds: the next ones follow it.
    void changedElsewhere();

  private:
    void watchNext();
    void settle();
    void settingChanged(const std::optional<std::string>& value);
    void write(const std::optional<std::string>& value);

    ProgramTable& programs_;
    Program* program_ = nullptr; // the table's
    RouteVolumePolicy volume_;
    pw_registry* registry_ = nullptr;
    std::deque<std::uint32_t> others_;        // that may be watched once the first has gone
    std::unique_ptr<RouteSettings> settings_; // while there is a session manager
    const std::unique_ptr<platform::Timer> settled_;
};
