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

/// What an application is known by. People are shown it, so that they can tell why a row of theirs
/// has the name that it has.
enum class NameEvidence {
    none,          ///< nothing is known
    sandbox,       ///< the sandbox that the process runs in
    program,       ///< the desktop entry that starts the executable or the script
    launch,        ///< the desktop entry that the desktop has started this very process from
    family,        ///< the application that the process is a helper of
    unit,          ///< the systemd unit that a desktop has made for the application
    game,          ///< the game that Steam has started
    speech,        ///< it is a part of the speech service
    clientId,      ///< the application id that it gave the sound server
    clientIcon,    ///< the icon that it gave the sound server
    fileName,      ///< the file name of the executable or the script
    clientName,    ///< the name that it gave the sound server
    clientProgram, ///< the executable that it named to the sound server
};

/// The English sentence for a person about the evidence, which is also the key of its translation.
/// Any thread.
const char* describe(NameEvidence evidence) noexcept;

/// What a client of the sound server says about itself. Anybody may claim anything. Empty texts are
/// missing properties.
struct ClientProperties {
    std::string name = {};   ///< application.name
    std::string id = {};     ///< application.id
    std::string icon = {};   ///< application.icon-name
    std::string binary = {}; ///< application.process.binary

    bool operator==(const ClientProperties&) const = default;
};

/// An application as a person knows it.
struct ApplicationIdentity {
    /// In the person's language; one line of valid UTF-8, at most 127 bytes. Processes with the
    /// same name are the same application, unless `folders` tell them apart. Empty only when
    /// nothing at all is known.
    std::string name;

    /// The process that stands for the application: the first of the family that the process in
    /// question belongs to, or that one itself. 0 where no process is known.
    pid_t mainProcess = 0;

    /// Of the main process, in clock ticks since boot: tells it from a later one of its number.
    std::uint64_t mainStartTime = 0;

    std::string entry;     ///< the id of the desktop entry, without ".desktop"; empty without one
    std::string entryPath; ///< the entry's file

    /// The full path of the main process's executable, or of the AppImage that it comes from; empty
    /// when unknown.
    std::string executable;

    /// A name in the icon theme or the full path of a picture. Without an entry a guess, for which
    /// there need not be an icon; the executable is the last resort then.
    std::string icon;

    NameEvidence evidence = NameEvidence::none;

    /// What tells it from another application of its name, where both are known by their file only;
    /// see disambiguatedName().
    std::vector<std::string> folders = {};

    /// Whether the process in question shows web pages: a browser, or a program with an engine of
    /// one, as far as that can be told.
    bool showsPages = false;

    bool operator==(const ApplicationIdentity&) const = default;
};

/// Which application is it? The one answer for whoever asks, about a process that plays as about
/// one that only runs.
///
/// What a process is itself comes first: the application of its sandbox, the desktop entry that
/// starts its executable or the script that it interprets. Only a process that is nothing by itself
/// gets a name from others: from the process that it is a helper of, or from the systemd unit that
/// the desktop has made for it, but not from one that it was only left in. Terminals, shells,
/// editors, starters of games and the desktop itself lend their name to nobody: a player that
/// somebody starts in a terminal is that player. The speech service is one application with its
/// modules and what they run. What a client claims counts last, and not at all
/// when it is what a sound library says by itself, or the tool that plays for another program.
///
/// Nothing counts that only some can see: what the process's windows say, which a service does not
/// know, or which desktop it is. So whoever asks gets the same name.
///
/// Answers are kept by process number and start time, until the desktop entries change. A process
/// that runs another program than at the first question keeps its name; see forget(). One thread.
class ApplicationResolver {
  public:
    /// Both must outlive the object.
    ApplicationResolver(const DesktopEntries& entries, const ProcessView& processes)
        : entries_(entries), processes_(processes) {}

    /// Of a process, and a client of the sound server that it has. `startTime` is that of the
    /// process which is meant; when another one has the number by now, or none, what the client
    /// says is all that counts. Asking again costs a look into a table. The answer is valid until
    /// the next call.
    const ApplicationIdentity& resolve(pid_t process, std::uint64_t startTime,
                                       const ClientProperties& client = {});

    /// Of an application in a sandbox, named as by sandboxApplication(), of which no process can
    /// be seen.
    ApplicationIdentity resolveSandbox(std::string_view application,
                                       const ClientProperties& client) const;

    /// Of a client that no process is known for, such as one on another machine.
    ApplicationIdentity resolveClient(const ClientProperties& client) const;

    /// Drops what is kept about a process.
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

/// Whether a client says that it shows web pages: by its executable, or as an engine calls itself
/// in every program.
bool claimsPages(const ClientProperties& client);

/// The same for one question, with nothing kept.
ApplicationIdentity identifyApplication(const ProcessRecord& process,
                                        const ClientProperties& client,
                                        const DesktopEntries& entries,
                                        const ProcessView& processes);
