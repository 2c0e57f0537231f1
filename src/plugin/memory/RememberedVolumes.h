#pragma once

#include "platform/loop/MonotonicClock.h"
#include "plugin/memory/Preferences.h"

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
/// A program that has never been seen or set may begin at a volume of its own. The application
/// makes a setting of that when it gets to know it; until then it is a default, not a change.
///
/// Of a program that is ignored nothing is remembered or touched. One that had been changed before
/// is freed once: it goes to full volume, not muted. What was set in another mixer only stays.
class RememberedVolumes {
  public:
    using TimePoint = platform::MonotonicClock::time_point;

    /// For so long after a command for a program the preferences say nothing about it.
    static constexpr std::chrono::seconds commandSilence{1};

    /// How long what was reported may take to come back in the preferences.
    static constexpr std::chrono::seconds longestEcho{2};

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
        bool freed = false;   ///< it is to be freed, and nothing else
        WantedVolume wanted;  ///< what it is to have now; nothing when it stays as it is
        WantedVolume forNext; ///< what only its next streams are to have
    };

    /// Takes a reading of the preferences, and answers what follows for the programs that are
    /// there. What the first one brings is old and makes nothing that plays louder.
    [[nodiscard]] std::vector<Consequence> read(Preferences preferences,
                                                std::span<const Program> programs, TimePoint now);

    bool isIgnored(std::string_view name) const { return preferences_.ignored.contains(name); }

    /// What a program that comes now is to have. A program without an entry is at full volume, or
    /// that of new ones, not muted, as its slider shows. One that was never seen by its name has
    /// what is remembered by the former one. Nothing before the preferences have been
    /// written for the first time, and for notification sounds without an entry: their setting is
    /// their own, and lasts.
    WantedVolume of(std::string_view name, std::string_view former = {}) const;

    /// What is remembered of a program; one that is ignored gets it when that ends.
    WantedVolume evenIfIgnored(std::string_view name, std::string_view former = {}) const;

    /// Whether a program that comes now is ignored and yet to be freed, which this answer settles.
    [[nodiscard]] bool takeDebt(std::string_view name);

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
    void ignoreNewly(const Preferences& before);
    void updateLatest(const std::string& key, const ProgramSetting& setting);
    void forgetUnseen(const Preferences& before);
    Consequence consequenceFor(const Program& program, const Preferences& before) const;
    WantedVolume changeFor(const Program& program, const std::string& key,
                           const Preferences& before) const;
    WantedVolume latestOf(const std::string& key) const;
    void forgetWhatIsWritten();
    ProgramSetting report(std::uint32_t pid, const std::string& key, const WantedVolume& wanted,
                          TimePoint now);

    bool hasRead_ = false;
    Preferences preferences_;
    std::map<std::string, Latest, std::less<>> latest_;
    std::set<std::string, std::less<>> owed_; // keys of the ignored that are yet to be freed
    std::vector<Command> commands_;
    std::vector<Report> reports_;
};
