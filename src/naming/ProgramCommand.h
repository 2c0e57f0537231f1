#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

struct ProcessRecord;

/// The program that a command finally runs, without wrappers (env, sh -c, sandboxes), and with the
/// interpreter or runtime (python, java, wine) separated from the script.
struct ProgramCommand {
    std::string program; ///< the executable: a path, or a word as written in the command

    /// What the executable runs, when it is an interpreter or a runtime: a script, a Java archive
    /// or class, a Python module, the folder or archive of an Electron program, a Windows program.
    std::string script;

    std::vector<std::string> arguments; ///< the program's own arguments

    /// The sandboxed application that a command starts, written as by sandboxApplication(); for a
    /// snap with its part, "snap.name.part".
    std::string sandbox;

    /// The id of the Steam game that a command starts.
    std::string game;

    /// Whether the executable says nothing about the program: an interpreter or a runtime.
    bool isInterpreted = false;

    /// Whether it only asks a running program to start something.
    bool isRequest = false;

    /// What identifies the program: the script, else the executable.
    [[nodiscard]] const std::string& subject() const noexcept {
        return script.empty() ? program : script;
    }
};

/// Splits a command line of a desktop entry, or of a shell, into words. Empty if its quotes are
/// invalid.
std::vector<std::string> commandWords(const std::string& line);

/// What a command starts. Any thread.
ProgramCommand startedProgram(std::span<const std::string> words);

/// What a process runs: its executable, and what that interprets according to the arguments. Any
/// thread.
ProgramCommand runningProgram(const ProcessRecord& process);

/// The program's own folder, shared with its helpers only. Empty if it is in a common folder, such
/// as /usr/bin or a home folder.
std::string packageFolder(std::string_view program);

/// Whether the path is inside the folder, at any depth.
[[nodiscard]] bool isInFolder(std::string_view path, std::string_view folder) noexcept;
