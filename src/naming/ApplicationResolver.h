#pragma once

#include "naming/ProcessView.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <unordered_map>
#include <vector>

class DesktopEntries;
struct DesktopEntry;

/// The evidence for an application's name. Shown to users as the reason for the name.
enum class NameEvidence {
    none,          ///< nothing is known
    sandbox,       ///< the sandbox that the process runs in
    program,       ///< the desktop entry that starts the executable or the script
    launch,        ///< the desktop entry from which the desktop started this process
    family,        ///< the application whose helper the process is
    unit,          ///< the systemd unit that a desktop has made for the application
    game,          ///< the game that Steam has started
    speech,        ///< it is part of the speech service
    clientId,      ///< the application id that it gave the sound server
    clientIcon,    ///< the icon that it gave the sound server
    fileName,      ///< the file name of the executable or the script
    clientName,    ///< the name that it gave the sound server
    clientProgram, ///< the executable that it gave the sound server
};

/// The English sentence about the evidence for the user, which is also the key of its translation.
/// Any thread.
const char* describe(NameEvidence evidence) noexcept;

/// The properties of a client of the sound server. They are claims and may be false. Empty texts
/// are missing properties.
struct ClientProperties {
    std::string name = {};   ///< application.name
    std::string id = {};     ///< application.id
    std::string icon = {};   ///< application.icon-name
    std::string binary = {}; ///< application.process.binary

    bool operator==(const ClientProperties&) const = default;
};

/// An application as the user knows it.
struct ApplicationIdentity {
    /// In the user's language; one line of valid UTF-8, at most 127 bytes. Processes with the same
    /// name are the same application, unless `folders` distinguish them. Empty only if nothing is
    /// known.
    std::string name;

    /// The application's main process: the topmost one of the process's family, or the process
    /// itself. 0 if no process is known.
    pid_t mainProcess = 0;

    /// Start time of the main process in clock ticks since boot: distinguishes it from a later one
    /// with its pid.
    std::uint64_t mainStartTime = 0;

    std::string entry;     ///< the id of the desktop entry, without ".desktop"; empty without one
    std::string entryPath; ///< the entry's file

    /// The full path of the main process's executable, or of the AppImage that it comes from; empty
    /// when unknown.
    std::string executable;

    /// A name in the icon theme or the full path of an image. Without an entry it is a guess, so
    /// the icon need not exist; the executable's name is the last resort.
    std::string icon;

    NameEvidence evidence = NameEvidence::none;

    /// Distinguishes it from another application of the same name, if only the files of both are
    /// known; see disambiguatedName().
    std::vector<std::string> folders = {};

    /// Whether the process shows web pages: a browser, or a program with an embedded engine, as far
    /// as known.
    bool showsPages = false;

    bool operator==(const ApplicationIdentity&) const = default;
};

/// Identifies the application of a process. Used both for processes that play and for those that
/// only run.
///
/// The process's own evidence comes first: the application of its sandbox, the desktop entry that
/// starts its executable or the script that it interprets. Only a process without its own evidence
/// is named after others: after the process whose helper it is, or after the systemd unit that the
/// desktop created for it, but not after a unit in which it was merely left. Nothing is named after
/// terminals, shells, editors, game launchers and the desktop itself: a player started in a
/// terminal is that player. The speech service is one application with its modules and what they
/// run. The claims of a client come last, and not at all if they are defaults of a sound library,
/// or name a tool that plays for another program.
///
/// Information that only some callers have is not used: the process's windows, which a service does
/// not see, or the current desktop. So all callers get the same name.
///
/// Results are cached by pid and start time, until the desktop entries change. A process that
/// executes another program after the first call keeps its name; see forget(). One thread.
class ApplicationResolver {
  public:
    /// Both must outlive the object.
    ApplicationResolver(const DesktopEntries& entries, const ProcessView& processes)
        : entries_(entries), processes_(processes) {}

    /// Identifies a process, with its client of the sound server. `startTime` is that of the
    /// process; if the pid now belongs to another process or to none, only the client's properties
    /// count. Repeated calls only cost a table lookup. The result is valid until the next call.
    const ApplicationIdentity& resolve(pid_t process, std::uint64_t startTime,
                                       const ClientProperties& client = {});

    /// Identifies a sandboxed application, named as by sandboxApplication(), none of whose
    /// processes can be seen.
    [[nodiscard]] ApplicationIdentity resolveSandbox(std::string_view application,
                                                     const ClientProperties& client) const;

    /// Identifies a client without a known process, such as one on another machine.
    [[nodiscard]] ApplicationIdentity resolveClient(const ClientProperties& client) const;

    /// Drops the cached result for a process.
    void forget(pid_t process) { known_.erase(process); }

  private:
    struct Known {
        std::uint64_t startTime = 0;
        std::uint64_t generation = 0;
        ClientProperties client;
        ApplicationIdentity identity;
    };

    ApplicationIdentity namedByClient(const ClientProperties& client) const;

    const DesktopEntries& entries_;
    const ProcessView& processes_;
    std::unordered_map<pid_t, Known> known_;
};

/// Whether a client claims to show web pages: by its executable, or by a name that an engine uses
/// in every program.
[[nodiscard]] bool claimsPages(const ClientProperties& client);

/// The same without caching.
ApplicationIdentity identifyApplication(const ProcessRecord& process,
                                        const ClientProperties& client,
                                        const DesktopEntries& entries,
                                        const ProcessView& processes);
