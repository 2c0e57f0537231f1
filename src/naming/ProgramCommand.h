#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

struct ProcessRecord;

/// The program that a command comes to, once what only prepares its way (env, sh -c, sandboxes) and
/// what only runs it (python, java, wine) are told apart from it.
struct ProgramCommand {
    std::string program; ///< the executable: a path, or a word as it stands in the command

    /// What the executable runs, when it is an interpreter or a runtime: a script, a Java archive
    /// or class, a Python module, the folder or archive of an Electron program, a Windows program.
    std::string script;

    std::vector<std::string> arguments; ///< what the program itself is given

    /// The application that a command starts in a sandbox, written as sandboxApplication() does;
    /// for a snap also its part, "snap.name.part".
    std::string sandbox;

    /// The number of the game that a command has Steam start.
    std::string game;

    /// Whether the executable says nothing about the program: an interpreter or a runtime.
    bool isInterpreted = false;

    /// Whether it only asks a program that runs already to start something.
    bool isRequest = false;

    /// What a person would look at: the script, else the executable.
    const std::string& subject() const noexcept { return script.empty() ? program : script; }
};

/// The words of a command line in a desktop entry, or of one for a shell. Empty for a line with an
/// error in its quotes.
std::vector<std::string> commandWords(const std::string& line);

/// What a command starts. Any thread.
ProgramCommand startedProgram(std::span<const std::string> words);

/// What a process runs: its executable, and by its arguments what that interprets. Any thread.
ProgramCommand runningProgram(const ProcessRecord& process);

/// The folder that a program has for itself and its helpers, where it does not lie in one that
/// programs share, such as /usr/bin or a person's home. Empty when there is none.
std::string packageFolder(std::string_view program);

/// Whether the path lies in the folder, at any depth.
bool isInFolder(std::string_view path, std::string_view folder) noexcept;
