#pragma once

#include <string_view>

/// The kind of a program, which decides whether the processes that it starts may be named after it.
/// Any thread.
enum class ProgramKind {
    other,
    shell,     ///< interactive shells, which also run scripts
    terminal,  ///< terminals, terminal multiplexers, logins
    editor,    ///< runs what the user is working on
    launcher,  ///< starts games and programs
    session,   ///< the desktop and system processes
    wrapper,   ///< creates a sandbox or another environment, then runs one program in it
    browser,   ///< shows web pages
    webView,   ///< a web engine's process of another program
    soundTool, ///< a command-line player, often run by another program
    speech,    ///< the desktop's speech service, or one of its modules
};

/// The kind of an executable, from its path or file name.
ProgramKind programKind(std::string_view executable);

/// Whether programs of this kind start independent programs, which the user does not confuse with
/// them.
[[nodiscard]] bool startsOthers(ProgramKind kind) noexcept;

/// Whether an executable shows web pages, from its path or file name: a browser, a part of one, or
/// the runtime of web applications.
[[nodiscard]] bool showsPages(std::string_view executable);

/// What an interpreter or runtime executes.
enum class ProgramRuntime { none, script, module, shell, java, electron, wine };

/// The kind of an executable, from its path or file name.
ProgramRuntime programRuntime(std::string_view executable);

/// The last component of a path, of a Windows path too.
std::string_view fileName(std::string_view path) noexcept;

/// The path without its last component, with no slash at its end; empty when it has one component.
std::string_view folderName(std::string_view path) noexcept;
