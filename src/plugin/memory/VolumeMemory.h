#pragma once

#include "plugin/application/ApplicationReports.h"
#include "plugin/memory/PreferencesWatch.h"
#include "plugin/memory/RememberedVolumes.h"

#include <functional>
#include <string>

class Program;
class ProgramTable;
class SoundEffects;

/// Lets programs have what is remembered of them, and sees to it that what happens to them is
/// remembered: carries preferences, commands and changes made in other mixers to RememberedVolumes,
/// and carries out what that decides. The run loop's thread only.
class VolumeMemory {
  public:
    /// Watches the preferences. All of these must outlive the object. `languageRead` is told the
    /// language that each reading has, after what the reading says of programs has been followed.
    VolumeMemory(PreferencesFile file, ProgramTable& programs, SoundEffects& effects,
                 const ApplicationReports& reports,
                 std::function<void(const std::string&)> languageRead);
    VolumeMemory(const VolumeMemory&) = delete;
    VolumeMemory& operator=(const VolumeMemory&) = delete;

    /// Waits for the first reading of the preferences. To be called at once.
    void begin();

    /// Reads the preferences again, soon.
    void readAgain() { preferences_.readAgain(); }

    /// What is remembered of the program, also while it is ignored.
    WantedVolume of(const Program& program) const;

    /// To be called when the program is new, has a connection to the application, was asked for
    /// `change`, or has been given another volume in place of `before` elsewhere.
    void added(Program& program);
    void connected(const Program& program);
    void commanded(const Program& program, const WantedVolume& change);
    void changedElsewhere(const Program& program, const WantedVolume& before);

    /// To be called when the notification sounds have got their program.
    void effectsAdded();

  private:
    void read(const Preferences& preferences);
    void follow(Program& program, const RememberedVolumes::Consequence& consequence);
    void want(Program& program, const WantedVolume& change);
    void leaveAlone(Program& program, bool freed);

    ProgramTable& programs_;
    SoundEffects& effects_;
    const ApplicationReports& reports_;
    const std::function<void(const std::string&)> languageRead_;
    RememberedVolumes remembered_;
    PreferencesWatch preferences_;
};
