#pragma once

#include "naming/ApplicationResolver.h"
#include "naming/ProgramCommand.h"
#include "naming/ProgramKinds.h"

#include <vector>

/// The search for the application of one process: looks at the process, then at those above it as
/// far as they are of its family. For one answer; what it takes by reference must outlive it.
class ApplicationSearch {
  public:
    ApplicationSearch(const ProcessRecord& process, const ClientProperties& client,
                      const DesktopEntries& entries, const ProcessView& processes);

    ApplicationIdentity answer();

  private:
    /// A process, and the desktop entry that it has by itself.
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

    std::vector<Member> family_; ///< from the process in question to the main one
    std::vector<pid_t> line_;    ///< its numbers, and those of what only runs it
    std::string unitAbove_;      ///< of the process that started the family
    std::string game_;           ///< the number of the game that Steam has started above
};
