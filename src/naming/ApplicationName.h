#pragma once

#include "platform/base/MarkedText.h"

#include <cstddef>
#include <string>
#include <string_view>

class ProgramFiles;
struct ProcessRecord;
struct ProgramCommand;

/// Names for programs. Any thread.

/// The maximum length of an application's name, in bytes.
inline constexpr std::size_t longestApplicationName = 127;

/// The displayed name of the speech service, which consists of many programs. Like the names of
/// desktop entries, it is in the language of those.
inline constexpr const char* speechName = MARKED_TEXT("PlainTexts", "Speech");

/// A text from another program as a name in one line: truncated between two characters if it is too
/// long, trimmed, and without characters that would disturb its line.
std::string sanitizedName(std::string_view text);

/// The self-chosen name of a client of the sound server; of a name made by a sound library, the
/// part that the program chose. Empty if it says nothing about the program.
std::string meaningfulName(std::string_view claimed);

/// The self-chosen icon of a client of the sound server. Empty for the default icon of a sound
/// library or runtime.
std::string meaningfulIcon(std::string_view claimed);

/// The fallback name of a program: the file name of its executable, script or Windows program, or
/// the folder of a game. Empty for a bare interpreter.
std::string programLabel(const ProgramCommand& command, const ProcessRecord& process);

/// The name that a program may have had when only its file was known, from the path of its
/// executable or AppImage. It takes over the settings stored under that name. Empty for a file that
/// runs programs of many names.
std::string formerName(std::string_view path);

/// The name of the link through which a program was started; or empty. A program can write any text
/// into its first argument, so the link must exist.
std::string linkName(const ProgramCommand& command, const ProcessRecord& process,
                     const ProgramFiles& files);

/// The folder of a program in one of Steam's libraries, which has the game's name; or empty.
std::string gameFolder(std::string_view path);
