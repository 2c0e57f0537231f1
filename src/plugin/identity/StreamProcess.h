#pragma once

#include "plugin/identity/NamespacePids.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// The claims of a node or client of the sound server about its process. They may be false, and may
/// change. Empty texts are missing properties.
struct StreamClaims {
    std::string process;     ///< application.process.id, as in the process's own namespace
    std::string binary;      ///< application.process.binary
    std::string name;        ///< application.name
    std::string id;          ///< application.id
    std::string icon;        ///< application.icon-name
    std::string host;        ///< application.process.host
    std::string machine;     ///< application.process.machine-id
    std::string api;         ///< client.api
    std::string serverType;  ///< pulse.server.type
    std::string application; ///< pipewire.access.portal.app_id; clients can set it as well

    bool operator==(const StreamClaims&) const = default;
};

/// The evidence about one output stream from the sound server: the claims of its node and of the
/// client that owns the node, and the server's knowledge of that client.
struct StreamEvidence {
    StreamClaims node;
    StreamClaims client;
    std::string peer; ///< the client's pipewire.sec.pid, from the kernel; empty without a client
    std::string user; ///< the client's pipewire.sec.uid, from the kernel
    std::optional<std::uint64_t> appeared; ///< a time when the client existed, in ticksSinceBoot()

    bool operator==(const StreamEvidence&) const = default;
};

/// The claims of the node, and those of its client for missing ones.
StreamClaims mergedClaims(const StreamEvidence& evidence);

/// The process behind a stream, as far as visible.
struct StreamProcess {
    std::uint32_t pid = 0; ///< 0: unknown

    /// Set for a certain and visible process; distinguishes it from a later one with the same pid.
    std::optional<std::uint64_t> startTime;

    /// The sandboxed application according to the kernel, even if several of its processes match;
    /// see sandboxApplication().
    std::string sandbox = {};

    /// The proof for the process.
    enum class Proof {
        none,    ///< none: the process is unknown, and its name only claimed
        peer,    ///< the kernel: it is the sound server's peer
        claim,   ///< a claim that was verified
        sandbox, ///< the sandbox that it runs in
    };
    Proof proof = Proof::none;

    [[nodiscard]] bool isKnown() const noexcept { return pid != 0; }
};

/// The facts about processes and the machine that are needed to identify a stream. The default asks
/// the kernel and caches what does not change, so reuse the object. One thread at a time.
class StreamProcessFacts {
  public:
    virtual ~StreamProcessFacts() = default;

    /// Fills the caches, so that the first call is fast.
    void prepare() const { numbers_.find(0); }

    [[nodiscard]] virtual std::vector<pid_t>
    processesNumbered(pid_t own) const;                                    ///< see NamespacePids
    [[nodiscard]] virtual std::vector<pid_t> numbers(pid_t process) const; ///< see processNumbers()
    [[nodiscard]] virtual std::optional<std::string> executablePath(pid_t process) const;
    [[nodiscard]] virtual std::optional<std::string> commandName(pid_t process) const;
    [[nodiscard]] virtual std::optional<uid_t> user(pid_t process) const;
    [[nodiscard]] virtual std::optional<std::uint64_t> startTime(pid_t process) const;
    [[nodiscard]] virtual std::string
    application(pid_t process) const;                  ///< see sandboxApplication()
    [[nodiscard]] virtual std::string machine() const; ///< the machine's id
    [[nodiscard]] virtual std::string host() const;

  private:
    mutable NamespacePids numbers_;
};

/// Finds the process that plays a stream.
///
/// For a client that is connected to the server directly, the kernel reports the process, whatever
/// the client claims. A client of the PulseAudio protocol is connected through a daemon, so there
/// is only its claim. It is accepted if exactly one process matches: it has the claimed pid, in its
/// own namespace, and the claimed binary, runs as the client's user or ours, and is older than the
/// client. Sandboxed applications are identified by the kernel's data about the process; the
/// server's property is not enough, because clients can set it.
///
/// The process of remote clients, and of clients whose claim matches none, is unknown. Nothing for
/// a stream of the sound server itself. Any thread; may read all of /proc.
[[nodiscard]] std::optional<StreamProcess> identifyStream(const StreamEvidence& evidence,
                                                          const StreamProcessFacts& facts = {});
