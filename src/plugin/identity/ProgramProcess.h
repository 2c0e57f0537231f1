#pragma once

#include "naming/ApplicationResolver.h"
#include "plugin/identity/StreamProcess.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// A process of a program as it checks in at the application. Plain values, any thread.
struct ProgramProcess {
    static constexpr std::size_t longestPath = 1023;

    /// A process, or one of PseudoPids; 0 before it has been given one of these.
    std::uint32_t pid = 0;

    /// Of the application that it is: the same for all processes of a program. Valid UTF-8, at most
    /// 127 bytes.
    std::string name;

    std::string path; ///< full path of the executable, valid UTF-8; empty when unknown

    /// Set for a process that can be looked at; tells it from a later one of the same number.
    std::optional<std::uint64_t> startTime;

    StreamProcess::Proof proof = StreamProcess::Proof::none;

    /// Why it has the name. Nothing for a program that we have named.
    std::optional<NameEvidence> evidence = {};
    std::string entryPath = {}; ///< the file of the desktop entry that the name is from

    // What the name follows from besides the process.
    std::string sandbox = {}; ///< see StreamProcess
    ClientProperties client = {};
    std::vector<std::string> folders = {}; ///< see ApplicationIdentity

    bool isSameProcess(const ProgramProcess& other) const noexcept {
        return pid == other.pid && startTime == other.startTime;
    }
};

/// Who plays a stream.
struct StreamPlayer {
    ProgramProcess process;

    /// The process that stands for the application, where that is another one and still there.
    std::optional<ProgramProcess> main = {};

    /// Whether it shows web pages, which set the volume of their sound themselves.
    bool showsPages = false;
};
