#pragma once

#include <initializer_list>
#include <string>

/// The texts that people read in a terminal, in their language, without Qt: the tables are compiled
/// in. The English text is the key, a literal here or in MARKED_TEXT(); the catalogues know the
/// namespace by the name that callers write: always "PlainTexts::tr". Any thread, as long as none
/// changes the environment.
namespace PlainTexts {

/// The English text itself where no table of the environment's languages has it.
std::string tr(const char* english);

/// In other languages than those of the environment, as platform::messageLanguages() has them.
std::string tr(const char* english, const std::string& languages);

/// `pattern` with "%1" and so on replaced by the values, which are made safe for a terminal.
std::string filled(const std::string& pattern, std::initializer_list<std::string> values);

} // namespace PlainTexts
