#pragma once

#include "plugin/identity/NamespacePids.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

/// What a node or a client of the sound server says about the process behind it. Anybody may claim
/// anything, and something else later. Empty texts are missing properties.
struct StreamClaims {
    std::string process;     ///< application.process.id, as the process itself counts
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

/// What the sound server says about one output stream: what its node and the client that owns the
/// node claim, and what the server knows about that client.
struct StreamEvidence {
    StreamClaims node;
    StreamClaims client;
    std::string peer; ///< the client's pipewire.sec.pid, told by the kernel; empty without a client
    std::string user; ///< the client's pipewire.sec.uid, told by the kernel
    std::optional<std::uint64_t> appeared; ///< when the client was there, in ticksSinceBoot()

    bool operator==(const StreamEvidence&) const = default;
};

/// What the node claims, with the claims of its client where it has none.
StreamClaims mergedClaims(const StreamEvidence& evidence);

/// The process behind a stream, as far as there is one to be seen.
struct StreamProcess {
    std::uint32_t pid = 0; ///< 0: nobody knows the process

    /// Set for a process that is certain and can be looked at; tells it from a later one of the
    /// same number.
    std::optional<std::uint64_t> startTime;

    /// The application of a sandbox that the kernel shows for it, also where several processes of
    /// that application may be meant; see sandboxApplication().
    std::string sandbox = {};

    /// What vouches for the process.
    enum class Proof {
        none,    ///< nothing: it is not known, and its name is claimed
        peer,    ///< the kernel: it is the sound server's peer
        claim,   ///< a claim that turned out to be true
        sandbox, ///< the sandbox that it runs in
    };
    Proof proof = Proof::none;

    bool isKnown() const noexcept { return pid != 0; }
};

/// The facts about processes and the machine that identifying a stream needs. The default asks the
/// kernel, and remembers what it needs not be asked again: one that is kept is much faster. One
/// thread at a time.
class StreamProcessFacts {
  public:
    virtual ~StreamProcessFacts() = default;

    /// Takes the time now that the first question would take.
    void prepare() const { numbers_.find(0); }

    virtual std::vector<pid_t> processesNumbered(pid_t own) const; ///< see NamespacePids
    virtual std::vector<pid_t> numbers(pid_t process) const;       ///< see processNumbers()
    virtual std::optional<std::string> executablePath(pid_t process) const;
    virtual std::optional<std::string> commandName(pid_t process) const;
    virtual std::optional<uid_t> user(pid_t process) const;
    virtual std::optional<std::uint64_t> startTime(pid_t process) const;
    virtual std::string application(pid_t process) const; ///< see sandboxApplication()
    virtual std::string machine() const;                  ///< the machine's id
    virtual std::string host() const;

  private:
    mutable NamespacePids numbers_;
};

/// Finds the process that plays a stream.
///
/// The kernel vouches for the process of a client that speaks to the server directly, whatever the
/// client says. A client of the PulseAudio protocol comes through a daemon, so that all there is is
/// its claim. It is believed if exactly one process fits: it has the claimed number, in its own
/// pid namespace, and the claimed binary, runs for the client's user or ours, and is older than the
/// client. A sandboxed application is known by what the kernel shows of its process; that the
/// server names one is not enough, because clients can make it say so.
///
/// The process of clients from elsewhere, and of those whose claim fits none, is not known. Nothing
/// for a stream that the sound server plays itself. Any thread; may read all of /proc.
std::optional<StreamProcess> identifyStream(const StreamEvidence& evidence,
                                            const StreamProcessFacts& facts = {});
