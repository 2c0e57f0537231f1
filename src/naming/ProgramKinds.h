#pragma once

#include <string_view>

/// What a program does for others. It decides whether a process may have its name from the process
/// that started it. Any thread.
enum class ProgramKind {
    other,
    shell,     ///< what people type commands into; it also runs scripts
    terminal,  ///< terminals, and what keeps them or logs in
    editor,    ///< runs what its user works on
    launcher,  ///< starts games and programs
    session,   ///< the desktop, the system's own processes
    wrapper,   ///< makes a sandbox or other surroundings, then runs one program in it
    browser,   ///< shows web pages
    webView,   ///< shows pages for the program that it belongs to
    soundTool, ///< plays a sound at the command line, often for another program
    speech,    ///< the desktop's speech service, or one of its modules
};

/// Of an executable, by its path or file name.
ProgramKind programKind(std::string_view executable);

/// Whether what such a program starts is a program of its own: a person does not take the one for
/// the other.
bool startsOthers(ProgramKind kind) noexcept;

/// Whether an executable shows web pages, by its path or file name: a browser, a part of one, or
/// the runtime of programs that are made of pages.
bool showsPages(std::string_view executable);

/// What an executable runs in place of being a program itself.
enum class ProgramRuntime { none, script, module, shell, java, electron, wine };

/// Of an executable, by its path or file name.
ProgramRuntime programRuntime(std::string_view executable);

/// The last component of a path, of a Windows path too.
std::string_view fileName(std::string_view path) noexcept;

/// The path without its last component, with no slash at its end; empty when it has one component.
std::string_view folderName(std::string_view path) noexcept;
