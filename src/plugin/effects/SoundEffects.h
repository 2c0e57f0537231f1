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

/// The notification sounds of all programs, shown as one program, which has the process of the
/// sound server and exists as long as that does. Each sound is over before its volume could be set,
/// so the volume is stored in the session manager beforehand. The run loop's thread only.
class SoundEffects {
  public:
    SoundEffects(platform::RunLoop& loop, ProgramTable& programs);
    ~SoundEffects();
    SoundEffects(const SoundEffects&) = delete;
    SoundEffects& operator=(const SoundEffects&) = delete;

    void serverConnected();

    /// Drops the program, which must not have streams any more, and everything of the connection.
    void serverLost();

    /// Null while there is no server.
    [[nodiscard]] Program* program() const noexcept { return program_; }

    /// Call this when the program table drops the program.
    void forgetProgram() noexcept { program_ = nullptr; }

    /// Call this for every object of the server. Watches the session manager's settings: of several
    /// such objects the first as long as it exists, then the next. `registry` is that of the
    /// connection and must last until serverLost().
    void globalAdded(pw_registry& registry, const AudioGlobal& global);

    /// Unknown ids are ignored.
    void globalRemoved(std::uint32_t id);

    /// A command has set another volume, so that `all` is wanted of the program.
    void asked(const WantedVolume& all);

    /// Another mixer has changed a playing sound: the next ones follow it.
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
    std::deque<std::uint32_t> others_;        // that may be watched when the first no longer exists
    std::unique_ptr<RouteSettings> settings_; // while there is a session manager
    const std::unique_ptr<platform::Timer> settled_;
};
