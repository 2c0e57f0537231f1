#pragma once

#include "plugin/memory/PreferencesWatch.h"
#include "plugin/memory/RememberedVolumes.h"
#include "plugin/programs/Program.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class ProgramTable;
class SoundEffects;

/// Restores remembered volumes and records changes: passes preferences, the application's messages,
/// commands and changes made in other mixers to RememberedVolumes, and applies its decisions. The
/// run loop's thread only.
class VolumeMemory : public Program::Listener {
  public:
    /// Watches the preferences. All of these must outlive the object. `languageRead` gets the
    /// language of each reading, after the reading has been applied to the programs.
    VolumeMemory(const PreferencesFile& file, ProgramTable& programs, SoundEffects& effects,
                 const ApplicationReports& reports,
                 std::function<void(const std::string&)> languageRead);
    VolumeMemory(const VolumeMemory&) = delete;
    VolumeMemory& operator=(const VolumeMemory&) = delete;

    /// Waits for the first reading of the preferences. Call it right after construction.
    void begin();

    /// The application has sent its preferences: `bytes` is the property list, `file` its path,
    /// `news` see ApplicationPreferences. Returns settings that the application does not have yet.
    /// Nothing if the property list is invalid; then the file is used.
    [[nodiscard]] std::optional<NamedSettings> told(const std::string& file, std::string_view bytes,
                                                    std::span<const std::string> news);

    /// The application has left the session bus, or another one has appeared.
    void applicationChanged(bool isThere) { remembered_.applicationChanged(isThere); }

    /// The file of the preferences in use, empty for none, and the file that is read.
    [[nodiscard]] const std::string& fileThatCounts() const noexcept {
        return remembered_.preferences().file;
    }
    [[nodiscard]] const std::string& ownFile() const noexcept { return ownFile_; }

    /// The remembered volume of the program, even while it is ignored.
    [[nodiscard]] WantedVolume of(const Program& program) const;

    void programAdded(Program& program) override;
    void programConnected(Program& program) override;
    void programCommanded(Program& program, const WantedVolume& change) override;
    void programChangedElsewhere(Program& program, const WantedVolume& before) override;
    void ignoreListChanged() override { preferences_.readAgain(); }

    /// Call this when a stream of the program that played before we started has the volume `found`;
    /// empty if that is its own volume, which does not apply to other streams.
    void found(Program& program, const WantedVolume& found);

    /// Call this when the program of the notification sounds has been created.
    void effectsAdded();

  private:
    void read(const Preferences& preferences);
    std::vector<RememberedVolumes::Program> described() const;
    void carryOut(const std::vector<RememberedVolumes::Consequence>& consequences);
    void follow(Program& program, const RememberedVolumes::Consequence& consequence);
    void want(Program& program, const WantedVolume& change, WantReason reason);
    void ignore(Program& program, bool reset);

    ProgramTable& programs_;
    SoundEffects& effects_;
    const ApplicationReports& reports_;
    const std::function<void(const std::string&)> languageRead_;
    const std::string ownFile_;
    std::string file_ = ownFile_; // that is read
    RememberedVolumes remembered_{ownFile_};
    PreferencesWatch preferences_;
};
