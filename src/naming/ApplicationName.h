#pragma once

#include <cstddef>
#include <string>
#include <string_view>

class ProgramFiles;
struct ProcessRecord;
struct ProgramCommand;

/// Names for programs. Any thread.

/// No name of an application has more bytes.
inline constexpr std::size_t longestApplicationName = 127;

/// What a person reads for the speech service, which is many programs. Like the names of desktop
/// entries it is for both sides, so a translation belongs here.
inline constexpr std::string_view speechName = "Speech";

/// A text that a stranger chose as a name in one line: cut between two characters where it is too
/// long, without blanks at its ends, and without what would disturb the line it stands in.
std::string sanitizedName(std::string_view text);

/// The name that a client of the sound server gives itself; of a name that a sound library gives
/// the part that the program chose. Empty for one that says nothing about the program.
std::string meaningfulName(std::string_view claimed);

/// The icon that a client of the sound server gives itself. Empty for one that its sound library or
/// runtime has given it, as it gives it to every program.
std::string meaningfulIcon(std::string_view claimed);

/// What to call a program that nobody has given a name: the file name of its executable, script or
/// Windows program, or the folder of a game. Empty when the process is a bare interpreter.
std::string programLabel(const ProgramCommand& command, const ProcessRecord& process);

/// What a program may have been called before more was known of it than its file, by the path of
/// its executable or AppImage. It goes on with what is remembered by that name. Empty for a file
/// that runs programs of many names.
std::string formerName(std::string_view path);

/// What a program was started as, where that is a link to its executable; or empty. A program can
/// put any word where that stands, so the link has to be there.
std::string linkName(const ProgramCommand& command, const ProcessRecord& process,
                     const ProgramFiles& files);

/// The folder of a program in one of Steam's libraries, which has the game's name; or empty.
std::string gameFolder(std::string_view path);
