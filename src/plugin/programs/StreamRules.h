#pragma once

#include "plugin/identity/ProgramProcess.h"
#include "plugin/volume/ChangeAuthor.h"
#include "plugin/volume/StreamVolume.h"

#include <optional>
#include <string_view>

/// What is decided about a stream by what it says of itself and by who plays it: pure functions,
/// any thread. A stream without a player is nobody's, or a notification sound.
namespace StreamRules {

/// Whether it is a notification sound by its media.role: by the one with which it was `announced`,
/// and without that by its `own`.
[[nodiscard]] bool isNotification(std::string_view announced, std::string_view own);

/// Whether a client of that name plays the application's sample sounds, which have the volume that
/// they are to show, if its process is the application. Who else calls itself like it is a program
/// like any other.
[[nodiscard]] bool mayBeSampleSound(std::string_view clientName, const ProgramProcess& process);

StreamKind kindOf(bool isNotification, const std::optional<StreamPlayer>& player);

/// What a stream of `other` gets when another mixer has given one of `changed`, of the same
/// program, `change`: nothing where it stays as it is. The streams of one process may differ, but
/// its further processes are the same item to the user, and no mixer's amplification is theirs.
WantedVolume followingChange(const WantedVolume& change, const std::optional<StreamPlayer>& changed,
                             const std::optional<StreamPlayer>& other);

/// What of the volume that a stream was found with the program's next streams are to have. A page's
/// is its own.
WantedVolume lastingPart(const WantedVolume& found, const std::optional<StreamPlayer>& player);

} // namespace StreamRules
