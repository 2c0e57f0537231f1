#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A part of a process's memory, as the kernel lists it.
struct CrashMapping {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    std::uint64_t offset = 0; ///< in the file
    std::string permissions;
    std::string path; ///< empty for none

    [[nodiscard]] bool has(std::uint64_t address) const noexcept {
        return address >= begin && address < end;
    }
};

/// What a program has left when it died (platform::CrashRecord). What it has not is empty or 0.
struct CrashDetails {
    std::string program;
    std::string version;
    std::string build;
    std::string kernel;
    std::string machine;
    std::string desktop;
    std::string session;
    std::int64_t pid = 0;
    std::int64_t started = 0; ///< seconds since 1970, as `time`
    std::int64_t time = 0;
    std::int64_t uptime = 0; ///< of the machine, in seconds
    int signal = 0;
    int code = 0;
    std::optional<std::uint64_t> faultAddress;
    std::string thread; ///< number and name
    std::string exceptionType;
    std::string exceptionText;
    std::string lastLine; ///< of the log
    std::vector<std::pair<std::string, std::uint64_t>> registers;
    std::vector<CrashMapping> mappings;
    std::vector<std::pair<std::uint64_t, std::string>> buildIds; ///< by the modules' bases
    std::vector<std::uint64_t> frames;
    bool hasMoreFrames = false;
    bool isWhole = false;

    /// Nothing if it is not of the version that this program knows.
    [[nodiscard]] static std::optional<CrashDetails> parse(std::string_view record);

    [[nodiscard]] const CrashMapping* mappingOf(std::uint64_t address) const noexcept;

    /// The build id of the module that holds the address; empty if it is not known.
    [[nodiscard]] std::string buildIdOf(std::uint64_t address) const;
};
