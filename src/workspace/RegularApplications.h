#pragma once

#include "naming/ApplicationResolver.h"

#include <string>
#include <sys/types.h>
#include <vector>

/// Whose processes count.
struct SessionOfUser {
    uid_t user = 0;

    /// The id of the login session, as in XDG_SESSION_ID; empty when it is unknown.
    std::string session;

    /// That of this process.
    static SessionOfUser current();
};

/// The applications that a person would say are running, in the order in which their processes
/// have started: those of the session that a desktop entry shows in the menus. Shells, services
/// that wait for work and helpers of other programs are none. Each is listed once, by its name,
/// with the main process that started first.
///
/// A function of what `processes` and `entries` say. Takes a few milliseconds for a live session,
/// so ask when something has happened, not by the clock. Any thread.
std::vector<ApplicationIdentity> regularApplications(const DesktopEntries& entries,
                                                     const ProcessView& processes,
                                                     const SessionOfUser& session);
