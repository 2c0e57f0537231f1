#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

/// What the sound server says about one output stream: properties of its node, and of the client
/// that owns the node. Empty texts are missing properties.
struct StreamEvidence {
    std::string nodeProcess;        ///< the node's application.process.id: a claim
    std::string nodeBinary;         ///< the node's application.process.binary: a claim
    std::string applicationName;    ///< application.name: a claim
    std::string nodeApi;            ///< the node's client.api
    std::string clientProcess;      ///< the client's pipewire.sec.pid, told by the kernel
    std::string clientUser;         ///< the client's pipewire.sec.uid, told by the kernel
    std::uint64_t clientSerial = 0; ///< the client's object.serial, never used again by the server

    bool operator==(const StreamEvidence&) const = default;
};

/// The program behind a stream, ready for a check-in. The texts are valid UTF-8; longer ones were
/// cut between two characters.
struct StreamProcess {
    static constexpr std::size_t longestName = 127;
    static constexpr std::size_t longestPath = 1023;

    std::uint32_t pid = 0; ///< a process, or a number from firstPseudoProcess up
    std::string name;      ///< file name of the executable, else what the stream calls itself
    std::string path;      ///< full path of the executable; empty when unknown

    /// Set for a process that is certain and can be looked at; tells it from a later one of the
    /// same number.
    std::optional<std::uint64_t> startTime;

    /// What vouches for the process.
    enum class Proof {
        none,    ///< nothing: the number is of our own making, the name claimed
        peer,    ///< the kernel: it is the sound server's peer
        claim,   ///< a claim that turned out to be true
        sandbox, ///< the sandbox that it runs in
    };
    Proof proof = Proof::none;

    /// No kernel gives a process such a number (its limit is 2^22).
    static constexpr std::uint32_t firstPseudoProcess = 0x40000000;

    bool isPseudo() const noexcept { return pid >= firstPseudoProcess; }
};

/// The facts about processes that identifying a stream needs. The default asks the kernel.
class StreamProcessFacts {
  public:
    virtual ~StreamProcessFacts() = default;
    virtual std::optional<std::string> executablePath(pid_t process) const;
    virtual std::optional<std::string> commandName(pid_t process) const;
    virtual std::optional<uid_t> user(pid_t process) const;
    virtual std::optional<std::uint64_t> startTime(pid_t process) const;
};

/// Finds the process that plays a stream. For a client that speaks to the server directly the
/// kernel vouches for the number. A client of the PulseAudio protocol comes through a daemon, so
/// that its number is a claim, which may count in another pid namespace: it is believed only if
/// that process exists, belongs to the client's user or ours, and has the claimed binary. Otherwise
/// the stream gets a number of its own, derived from its client.
///
/// Nothing for a stream that the sound server plays itself. Any thread.
std::optional<StreamProcess> identifyStream(const StreamEvidence& evidence,
                                            const StreamProcessFacts& facts = {});

} // namespace platform
