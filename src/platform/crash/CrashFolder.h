#pragma once

#include <chrono>
#include <string>

namespace platform {

/// The folders of crash reports, and what lies in them:
///
///  - NAME_DATE.crash: a report, for people;
///  - NAME-PID.raw: what a program that died has left of it, to become a report; CrashRecord.h;
///  - .NAME-PID.prepared: the same of a program that runs. It holds a lock on it;
///  - .off: nothing is written.
///
/// Any thread.

/// Where programs of this user leave theirs; empty without a home.
std::string crashFolder();

/// Where those of all users are looked for.
std::string sharedCrashFolder();

inline constexpr const char* crashReportEnding = ".crash";
inline constexpr const char* crashRecordEnding = ".raw";
inline constexpr const char* preparedRecordEnding = ".prepared";

/// Whether programs are to leave reports in that folder. What cannot be changed is a line in the
/// system log.
[[nodiscard]] bool isCrashWritingOn(const std::string& folder);
void setCrashWriting(const std::string& folder, bool isOn);

/// Whether a program has died three times in five minutes, the last time less than an hour ago: it
/// would fill the disk with the same report.
[[nodiscard]] bool isCrashLoop(const std::string& folder, const std::string& program,
                               std::chrono::system_clock::time_point now);

} // namespace platform
