#pragma once

#include "naming/ApplicationResolver.h"

#include <string>
#include <sys/types.h>
#include <vector>

/// The user and session whose processes count.
struct SessionOfUser {
    uid_t user = 0;

    /// The id of the login session, as in XDG_SESSION_ID; empty if unknown.
    std::string session;

    /// The session of this process.
    static SessionOfUser current();
};

/// The applications that the user would consider running, in the order of their process starts:
/// those of the session with a desktop entry that is shown in the menus. Without shells, waiting
/// services and helpers of other programs. Each is listed once, by its name, with the main process
/// that started first.
///
/// Depends on `processes` and `entries` only. Takes a few milliseconds for a live session, so call
/// it on events; do not poll. Any thread.
std::vector<ApplicationIdentity> regularApplications(const DesktopEntries& entries,
                                                     const ProcessView& processes,
                                                     const SessionOfUser& session);
