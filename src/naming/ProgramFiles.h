#pragma once

#include <string>
#include <vector>

/// What the file system says about programs. The default asks the one that we run on; recorded
/// situations answer from plain data. Any thread, as long as none changes the environment.
class ProgramFiles {
  public:
    ProgramFiles();
    explicit ProgramFiles(std::vector<std::string> searchPath);
    virtual ~ProgramFiles() = default;

    /// The full path of the program that the first word of a command stands for, found as a shell
    /// finds it. Links are not resolved. Empty when there is no such program.
    std::string find(const std::string& word) const;

    /// Whether a link of that name, on the search path or beside the executable, leads to it.
    bool isLinkTo(const std::string& name, const std::string& executable) const;

    virtual bool isExecutable(const std::string& path) const;

    /// The path with its links resolved; as it is when there is no such file.
    virtual std::string resolved(const std::string& path) const;

    /// Whether an interpreter runs the file, so that the process it becomes has another executable.
    virtual bool isScript(const std::string& path) const;

  private:
    // $PATH, and where systems and people keep programs: services often have a shorter one than
    // sessions, and both have to find the same.
    std::vector<std::string> searchPath_;
};
