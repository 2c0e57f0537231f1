#pragma once

#include "naming/ApplicationResolver.h"
#include "plugin/identity/StreamProcess.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A process of a program, as in a check-in. Plain values, any thread.
struct ProgramProcess {
    static constexpr std::size_t longestPath = 1023;

    /// A pid, or one of PseudoPids; 0 before one has been assigned.
    std::uint32_t pid = 0;

    /// The application's name, the same for all processes of a program. Valid UTF-8, at most 127
    /// bytes.
    std::string name;

    std::string path; ///< full path of the executable, valid UTF-8; empty when unknown

    /// Set for a visible process; distinguishes it from a later one with the same pid.
    std::optional<std::uint64_t> startTime;

    StreamProcess::Proof proof = StreamProcess::Proof::none;

    /// The evidence for the name. Nothing for names that we chose.
    std::optional<NameEvidence> evidence = {};
    std::string entryPath = {}; ///< the file of the desktop entry that the name is from

    // Further input of the name.
    std::string sandbox = {}; ///< see StreamProcess
    ClientProperties client = {};
    std::vector<std::string> folders = {}; ///< see ApplicationIdentity

    [[nodiscard]] bool isSameProcess(const ProgramProcess& other) const noexcept {
        return pid == other.pid && startTime == other.startTime;
    }
};

/// The player of a stream.
struct StreamPlayer {
    ProgramProcess process;

    /// The application's main process, if that is another one and still running.
    std::optional<ProgramProcess> main = {};

    /// Whether it shows web pages, which set their own volume.
    bool showsPages = false;
};
