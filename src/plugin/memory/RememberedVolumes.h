#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/memory/ApplicationPreferences.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The remembered volumes of programs by name. If sources conflict, the newest value wins: a
/// command of the application, a change made in another mixer, or an entry of the preferences that
/// differs from the previous reading. The application writes its commands and the reported changes
/// of other mixers into the preferences a moment later; these entries are not new. Has no clock,
/// timer or file. Any thread, one at a time.
///
/// An application on the session bus sends its preferences itself. While it is present, these are
/// used and the file is only recorded. When the two connect, each may have newer values: the
/// application what the user has set since its last message, we what was set while an earlier
/// application was running that ended before it had saved it. See told().
///
/// A new program may start at a default volume. The application stores it as a setting when the
/// program checks in; until then it is a default, not a change.
///
/// An ignored program is not changed, and its changes are not remembered. If it had been changed by
/// the application, it is reset once to full volume, not muted. Volumes set only in another mixer
/// stay.
class RememberedVolumes {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    /// For this time after a command for a program, the preferences are ignored for it.
    static constexpr std::chrono::seconds commandSilence{1};

    /// The maximum time until a reported value appears in the preferences.
    static constexpr std::chrono::seconds longestEcho{2};

    /// How long the application's news count as new. The plug-in may have just started and not
    /// found the playing streams yet.
    static constexpr std::chrono::seconds newsLifetime{10};

    /// A program as it checked in, with its wanted volume.
    struct Program {
        std::uint32_t pid;
        std::string name;
        WantedVolume wanted;
        std::string former = {}; ///< its possible earlier name, or empty
    };

    /// The effect of a reading on a program.
    struct Consequence {
        bool ignored = false;
        bool reset = false;    ///< it must be reset, and nothing else
        WantedVolume wanted;   ///< its new volume; nothing if it does not change
        bool restored = false; ///< the volume is restored, not a recent change
        WantedVolume forNext;  ///< the volume for its next streams only
    };

    /// The effect of the application's message.
    struct Outcome {
        std::vector<Consequence> consequences; ///< in the order of the programs
        NamedSettings newer;                   ///< settings that the application does not have yet
    };

    /// `file` is the assumed path of the application's preferences until it sends it.
    explicit RememberedVolumes(std::string file = {}) : file_(std::move(file)) {}

    /// Takes a reading of the preferences file, and returns its effect on the existing programs;
    /// none while the application's message is in use. The first reading is old and never makes a
    /// playing stream louder.
    [[nodiscard]] std::vector<Consequence> read(Preferences preferences,
                                                std::span<const Program> programs, TimePoint now);

    /// Takes the application's message. Its news are newer than all our values, except after a
    /// command within commandSilence for a program that still exists. The first message of an
    /// application also contains its stored values: if it uses the same file as the previous
    /// application, our later values (from commands, news, other mixers) are newer; otherwise only
    /// unreported changes from other mixers are. It never makes a stream louder that was found at a
    /// lower volume than remembered.
    [[nodiscard]] Outcome told(const ApplicationPreferences& word,
                               std::span<const Program> programs, TimePoint now);

    /// The application has left the session bus, or another one has appeared that has not sent its
    /// preferences yet. Until then the file is used.
    void applicationChanged(bool isThere);

    /// The preferences in use.
    [[nodiscard]] const Preferences& preferences() const noexcept { return preferences_; }

    [[nodiscard]] bool isIgnored(std::string_view name, std::string_view former = {}) const {
        return preferences_.isIgnored(name, former);
    }

    /// The volume for a program that starts now. A program without an entry gets full volume, or
    /// that of new programs, not muted, as its slider shows. A program with a new name gets the
    /// volume remembered for the former one. Nothing before the preferences have been written for
    /// the first time, and for notification sounds without an entry, whose volume is stored
    /// elsewhere.
    [[nodiscard]] WantedVolume of(std::string_view name, std::string_view former = {}) const;

    /// The remembered volume of a program; an ignored one gets it when it is no longer ignored.
    [[nodiscard]] WantedVolume evenIfIgnored(std::string_view name,
                                             std::string_view former = {}) const;

    /// Whether the user has just changed the program, according to the application. This also
    /// applies to streams that already play.
    [[nodiscard]] bool isNews(std::string_view name, TimePoint now) const;

    /// Whether a program that starts now is ignored and has a pending reset, which this call
    /// clears.
    [[nodiscard]] bool takePendingReset(std::string_view name);

    /// The application has sent the command `change` for `program`.
    void commanded(const Program& program, const WantedVolume& change, TimePoint now);

    /// Another mixer has set `program` to its current wanted volume. Returns what to report to the
    /// application, if it is visible to the user. Without a connection (`connected`), connected()
    /// returns it later.
    [[nodiscard]] std::optional<ProgramSetting> changedElsewhere(const Program& program,
                                                                 const WantedVolume& before,
                                                                 bool connected, TimePoint now);

    /// The program has connected to the application. Returns an unreported change.
    [[nodiscard]] std::optional<ProgramSetting> connected(const Program& program, TimePoint now);

  private:
    /// Values that are newer than the preferences.
    struct Latest {
        WantedVolume wanted;
        bool ours = false; // some of it was set by the application
        bool unreported = false;
    };
    struct Command {
        std::uint32_t pid;
        std::string key;
        TimePoint time;
    };
    struct Report {
        std::uint32_t pid;
        std::string key;
        ProgramSetting setting;
        TimePoint time;
    };

    void forgetOld(TimePoint now);
    bool isSilenced(const std::string& key) const;
    bool note(Preferences reading);
    void moveTo(const std::string& file);
    void ignoreNewly(const Preferences& before);
    void updateLatest(const std::string& key, const ProgramSetting& setting);
    void forgetUnseen(const Preferences& before);
    void clearPendingResets(std::span<const Program> programs);
    void forgetWhatIsWritten();
    void takeNews(const ApplicationPreferences& word, std::span<const Program> programs,
                  TimePoint now);
    NamedSettings takeNewer();
    Consequence consequenceFor(const Program& program, const Preferences& before,
                               const WantedVolume& change) const;
    WantedVolume changeFor(const Program& program, const Preferences& before) const;
    WantedVolume newsFor(const Program& program) const;
    WantedVolume restoredFor(const Program& program, const ProgramSetting& before) const;
    std::vector<ProgramSetting> settingsOf(std::span<const Program> programs) const;
    WantedVolume latestOf(const std::string& key) const;
    ProgramSetting report(std::uint32_t pid, const std::string& key, const WantedVolume& wanted,
                          TimePoint now);

    std::string file_;                  // the application's file
    std::optional<Preferences> inFile_; // the last reading of it
    bool isTold_ = false;               // the application's message is in use
    bool wasTold_ = false;              // there has been a message
    Preferences preferences_;           // the preferences in use
    std::map<std::string, Latest, std::less<>> latest_;
    std::map<std::string, TimePoint, std::less<>> news_; // when the application sent them
    std::set<std::string, std::less<>>
        pendingResets_; // keys of ignored programs that must still be reset
    std::vector<Command> commands_;
    std::vector<Report> reports_;
};
