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

/// What is remembered of programs, by their names, and who wins where several have a say: the
/// newest of a command of the application, a change made in another mixer, and an entry of the
/// preferences that differs from the previous reading. The application writes what it commands and
/// what it hears of other mixers into the preferences a moment later; that is nothing new. Owns no
/// clock, timer or file. Any thread, one at a time.
///
/// An application that is on the session bus tells its preferences itself. As long as it is there,
/// its word counts and the file is only noted. When the two meet, each may know what the other does
/// not: the application what a person has set since it was last heard, we what was set while an
/// earlier one was there that ended before it had saved that. See told().
///
/// A program that has never been seen or set may begin at a volume of its own. The application
/// makes a setting of that when it gets to know it; until then it is a default, not a change.
///
/// Of a program that is ignored nothing is remembered or touched. One that had been changed before
/// is reset once: it goes to full volume, not muted. What was set in another mixer only stays.
class RememberedVolumes {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    /// For so long after a command for a program the preferences say nothing about it.
    static constexpr std::chrono::seconds commandSilence{1};

    /// How long what was reported may take to come back in the preferences.
    static constexpr std::chrono::seconds longestEcho{2};

    /// For so long what the application calls news is new. The plug-in may have come a moment ago
    /// and have yet to find what plays.
    static constexpr std::chrono::seconds newsLifetime{10};

    /// A program as it checked in, and what is wanted of it.
    struct Program {
        std::uint32_t pid;
        std::string name;
        WantedVolume wanted;
        std::string former = {}; ///< the name that it may have been known by before, or empty
    };

    /// What follows for a program from a reading.
    struct Consequence {
        bool ignored = false;
        bool reset = false;    ///< it is to be reset, and nothing else
        WantedVolume wanted;   ///< what it is to have now; nothing when it stays as it is
        bool restored = false; ///< that is only remembered, and nobody has asked for it just now
        WantedVolume forNext;  ///< what only its next streams are to have
    };

    /// What follows from the application's word.
    struct Outcome {
        std::vector<Consequence> consequences; ///< in the order of the programs
        NamedSettings newer; ///< what the application does not know yet, as it would keep it
    };

    /// `file` is where the application is taken to keep its preferences until it says so.
    explicit RememberedVolumes(std::string file = {}) : file_(std::move(file)) {}

    /// Takes a reading of the preferences' file, and answers what follows for the programs that are
    /// there, nothing at all while the application's word counts. What the first one brings is old
    /// and makes nothing that plays louder.
    [[nodiscard]] std::vector<Consequence> read(Preferences preferences,
                                                std::span<const Program> programs, TimePoint now);

    /// Takes the application's word. Its news are newer than all that we have, unless we have had a
    /// command within commandSilence for a program that is still there. The first word of an
    /// application also says what it has restored: where it keeps that in the file of the one
    /// before, what was set since (by a command, by its news, in another mixer) is newer; else only
    /// what was set in another mixer and could not be reported. It makes nothing louder that was
    /// found quieter than remembered.
    [[nodiscard]] Outcome told(const ApplicationPreferences& word,
                               std::span<const Program> programs, TimePoint now);

    /// The application has gone from the session bus, or another one has come and has yet to speak.
    /// Until then the file counts.
    void applicationChanged(bool isThere);

    /// What counts now.
    const Preferences& preferences() const noexcept { return preferences_; }

    bool isIgnored(std::string_view name, std::string_view former = {}) const {
        return preferences_.isIgnored(name, former);
    }

    /// What a program that comes now is to have. A program without an entry is at full volume, or
    /// that of new ones, not muted, as its slider shows. One that was never seen by its name has
    /// what is remembered by the former one. Nothing before the preferences have been
    /// written for the first time, and for notification sounds without an entry: their setting is
    /// their own, and lasts.
    WantedVolume of(std::string_view name, std::string_view former = {}) const;

    /// What is remembered of a program; one that is ignored gets it when that ends.
    WantedVolume evenIfIgnored(std::string_view name, std::string_view former = {}) const;

    /// Whether a person has set the program just now, as the application says. That holds for what
    /// plays already, too.
    bool isNews(std::string_view name, TimePoint now) const;

    /// Whether a program that comes now is ignored and yet to be reset, which this answer settles.
    [[nodiscard]] bool takePendingReset(std::string_view name);

    /// The application has asked `program` for `change`.
    void commanded(const Program& program, const WantedVolume& change, TimePoint now);

    /// Another mixer has set `program` to what is wanted of it now. Answers what to report to the
    /// application, if it is anything that a person sees; what it is not `connected` for,
    /// connected() answers later.
    [[nodiscard]] std::optional<ProgramSetting> changedElsewhere(const Program& program,
                                                                 const WantedVolume& before,
                                                                 bool connected, TimePoint now);

    /// The application has got to know the program. Answers what is yet to be reported.
    [[nodiscard]] std::optional<ProgramSetting> connected(const Program& program, TimePoint now);

  private:
    /// What is newer than the preferences.
    struct Latest {
        WantedVolume wanted;
        bool ours = false; // some of it was asked for by the application
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

    std::string file_;                  // which the application keeps
    std::optional<Preferences> inFile_; // the last reading of it
    bool isTold_ = false;               // the application's word counts
    bool wasTold_ = false;              // there has been one
    Preferences preferences_;           // what counts
    std::map<std::string, Latest, std::less<>> latest_;
    std::map<std::string, TimePoint, std::less<>> news_; // when the application told them
    std::set<std::string, std::less<>>
        pendingResets_; // keys of the ignored that are yet to be reset
    std::vector<Command> commands_;
    std::vector<Report> reports_;
};
