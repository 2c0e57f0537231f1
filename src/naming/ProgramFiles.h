#pragma once

#include <string>
#include <vector>

/// Facts about programs from the file system. The default uses the real one; tests use recorded
/// data. Any thread, as long as none changes the environment.
class ProgramFiles {
  public:
    ProgramFiles();
    explicit ProgramFiles(std::vector<std::string> searchPath);
    virtual ~ProgramFiles() = default;

    /// The full path of the program for the first word of a command, found as a shell does. Links
    /// are not resolved. Empty if there is no such program.
    [[nodiscard]] std::string find(const std::string& word) const;

    /// Whether a link of that name, on the search path or beside the executable, leads to it.
    [[nodiscard]] bool isLinkTo(const std::string& name, const std::string& executable) const;

    [[nodiscard]] virtual bool isExecutable(const std::string& path) const;

    /// The path with its links resolved; unchanged if there is no such file.
    [[nodiscard]] virtual std::string resolved(const std::string& path) const;

    /// Whether the file is a script, so that its process has the interpreter's executable.
    [[nodiscard]] virtual bool isScript(const std::string& path) const;

  private:
    // $PATH, and the usual folders of programs: services often have a shorter $PATH than sessions,
    // and both must find the same programs.
    std::vector<std::string> searchPath_;
};
