#pragma once

#include <string>

namespace platform {

/// The languages that the environment asks for messages in, the preferred first, as in LANGUAGE:
/// "de_AT:de:en". Empty for English. Any thread, as long as none changes the environment.
std::string messageLanguages();

} // namespace platform
