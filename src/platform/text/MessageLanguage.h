#pragma once

#include <string>

namespace platform {

/// The language that the person wants to read, as the environment says: the name of a locale
/// without its character set, such as "de_DE" or "sr_RS@latin". "C" where nothing is said, which is
/// English. Any thread, as long as none changes the environment.
std::string messageLanguage();

} // namespace platform
