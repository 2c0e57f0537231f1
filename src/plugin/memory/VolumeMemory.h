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

/// Lets programs have what is remembered of them, and sees to it that what happens to them is
/// remembered: carries preferences, the application's word, commands and changes made in other
/// mixers to RememberedVolumes, and carries out what that decides. The run loop's thread only.
class VolumeMemory : public Program::Listener {
  public:
    /// Watches the preferences. All of these must outlive the object. `languageRead` is told the
    /// language that each reading has, after what the reading says of programs has been followed.
    VolumeMemory(const PreferencesFile& file, ProgramTable& programs, SoundEffects& effects,
                 const ApplicationReports& reports,
                 std::function<void(const std::string&)> languageRead);
    VolumeMemory(const VolumeMemory&) = delete;
    VolumeMemory& operator=(const VolumeMemory&) = delete;

    /// Waits for the first reading of the preferences. To be called at once.
    void begin();

    /// The application tells its preferences: `bytes` is the property list, `file` where it keeps
    /// that, `news` see ApplicationPreferences. Answers what the application does not know yet.
    /// Nothing when that is no property list; then the file counts.
    std::optional<NamedSettings> told(const std::string& file, std::string_view bytes,
                                      std::span<const std::string> news);

    /// The application has gone from the session bus, or another one has come.
    void applicationChanged(bool isThere) { remembered_.applicationChanged(isThere); }

    /// The file that the preferences come from that count, empty for none, and the one that is
    /// read.
    const std::string& fileThatCounts() const noexcept { return remembered_.preferences().file; }
    const std::string& ownFile() const noexcept { return ownFile_; }

    /// What is remembered of the program, also while it is ignored.
    WantedVolume of(const Program& program) const;

    void programAdded(Program& program) override;
    void programConnected(Program& program) override;
    void programCommanded(Program& program, const WantedVolume& change) override;
    void programChangedElsewhere(Program& program, const WantedVolume& before) override;
    void ignoreListChanged() override { preferences_.readAgain(); }

    /// To be called when a stream of the program that was heard before us has `found`; empty where
    /// that is its own volume, which is not for other streams.
    void found(Program& program, const WantedVolume& found);

    /// To be called when the notification sounds have got their program.
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
