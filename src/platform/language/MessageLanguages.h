#pragma once

#include <string>

namespace platform {

/// The languages that the environment asks for messages in, the preferred first, as in LANGUAGE:
/// "de_AT:de:en". Empty for English. Any thread, as long as none changes the environment.
std::string messageLanguages();

/// The preferred one alone, as the name of a locale without its character set: "de_AT",
/// "sr_RS@latin"; "C" for English where nothing is said. Any thread, likewise.
std::string messageLanguage();

} // namespace platform
