#pragma once

#include <string>

namespace platform {

/// The message languages of the environment, the preferred first, as in LANGUAGE: "de_AT:de:en".
/// Empty for English. Any thread, as long as none changes the environment.
std::string messageLanguages();

/// The preferred one only, as a locale name without character set: "de_AT", "sr_RS@latin"; "C"
/// (English) if none is set. Any thread, likewise.
std::string messageLanguage();

} // namespace platform
