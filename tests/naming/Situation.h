#pragma once

#include "support/PlainProcesses.h"

#include "naming/ApplicationResolver.h"
#include "naming/DesktopEntries.h"
#include "naming/ProgramFiles.h"
#include "support/PrivateFolder.h"
#include "workspace/RegularApplications.h"

#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

/// What runs and what is installed at one moment, as a file tells it. README.md beside the files
/// describes them.
class Situation {
  public:
    /// A question about a process (or a client without one), and the answer that a user expects.
    struct Question {
        std::string title;
        pid_t process = 0;
        std::string sandbox;
        ClientProperties client;
        std::vector<pid_t> beside; ///< which play already, in their order
        ApplicationIdentity expected;
    };

    /// Reads the file on top of the one that stands for the session in which it all happens.
    /// Throws std::runtime_error when one of them says what nobody understands.
    Situation(const std::filesystem::path& session, const std::filesystem::path& file);

    const DesktopEntries& entries() const { return *entries_; }
    const ProcessView& processes() const { return processes_; }
    const std::vector<Question>& questions() const { return questions_; }

    /// The names that a list of running applications should have.
    const std::vector<std::string>& running() const { return running_; }

    static constexpr uid_t user = 1000;

  private:
    class Files final : public ProgramFiles {
      public:
        Files();
        bool isExecutable(const std::string& path) const override;
        std::string resolved(const std::string& path) const override;
        bool isScript(const std::string& path) const override;

        std::set<std::string> programs;
        std::set<std::string> scripts;
        std::map<std::string, std::string> links;
    };

    class Reader;

    const support::PrivateFolder folder_;
    Files files_;
    PlainProcesses processes_;
    DesktopEnvironment environment_;
    std::unique_ptr<DesktopEntries> entries_;
    std::vector<Question> questions_;
    std::vector<std::string> running_;
};
