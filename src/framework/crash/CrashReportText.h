#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class Redactor;
struct CrashDetails;

/// What a report tells about the machine that its program does not know. Empty for unknown.
struct CrashSurroundings {
    std::string distribution;
    std::string pipewire;
    std::string wireplumber;

    /// Runs the sound system's programs, which takes some time.
    [[nodiscard]] static CrashSurroundings ofThisMachine();
};

/// The text of a crash report, as docs/crashes.md explains it. What tells about the person is
/// replaced. Names come from the files that were loaded, as far as they are still the same.
std::string crashReportText(const CrashDetails& details, const CrashSurroundings& surroundings,
                            const Redactor& redactor);

/// The text for a record of another version of the program, which is kept as it is.
std::string crashReportText(std::string_view unknownRecord, const Redactor& redactor);

/// "2026-11-27 10:11:12 +0000"
std::string crashTimeText(std::int64_t time);
