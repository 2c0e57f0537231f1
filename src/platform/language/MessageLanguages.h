#pragma once

#include <string>
#include <vector>

namespace platform {

/// The message languages of the environment, the preferred first, as in LANGUAGE: "de_AT:de:en".
/// Empty for English. Any thread, as long as none changes the environment.
std::string messageLanguages();

/// The preferred one only, as a locale name without character set: "de_AT", "sr_RS@latin"; "C"
/// (English) if none is set. Any thread, likewise.
std::string messageLanguage();

/// The names of the catalogues to look a text up in, the preferred first: "de_AT", "de". English,
/// which is in the sources, ends the list; only a variety of it can have a catalogue: "en_GB". Any
/// thread, likewise.
std::vector<std::string> catalogueNames();

/// The same for other languages than those of the environment, as messageLanguages() has them.
std::vector<std::string> catalogueNames(const std::string& languages);

} // namespace platform
