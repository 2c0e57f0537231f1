#pragma once

#include "naming/ApplicationResolver.h"
#include "naming/ProgramCommand.h"
#include "naming/ProgramKinds.h"

#include <vector>

/// The search for the application of one process: examines the process, then its ancestors as far
/// as they belong to its family. For one result only.
class ApplicationSearch {
  public:
    ApplicationSearch(const ProcessRecord& process, const ClientProperties& client,
                      const DesktopEntries& entries, const ProcessView& processes);

    ApplicationIdentity answer();

  private:
    /// A process, and its own desktop entry.
    struct Member {
        ProcessRecord process;
        ProgramCommand command;
        ProgramKind kind = ProgramKind::other;
        const DesktopEntry* entry = nullptr;
        NameEvidence evidence = NameEvidence::none;
    };

    Member look(ProcessRecord process) const;
    const DesktopEntry* sandboxEntry(const Member& member) const;
    bool isOfCarrier(const Member& member) const;
    const DesktopEntry* programEntry(const Member& member) const;
    const DesktopEntry* namedEntry(const Member& member) const;

    void climb();
    bool isFamily(const Member& child, const Member& parent) const;
    const DesktopEntry* unitEntry() const;
    bool isOfPages() const;

    bool answerBySpeech(ApplicationIdentity& identity) const;
    bool answerByEntry(ApplicationIdentity& identity) const;
    bool answerByGame(ApplicationIdentity& identity) const;
    bool answerByClaim(ApplicationIdentity& identity) const;
    void answerByLabel(ApplicationIdentity& identity) const;
    static void take(const DesktopEntry& entry, NameEvidence evidence,
                     ApplicationIdentity& identity);

    const ClientProperties& client_;
    const DesktopEntries& entries_;
    const ProcessView& processes_;

    std::vector<Member> family_; ///< from the process to the main one
    std::vector<pid_t> line_;    ///< its pids, and those of processes that only run it
    std::string unitAbove_;      ///< of the process that started the family
    std::string game_;           ///< the id of the game that Steam has started in an ancestor
};
