#pragma once

#include <initializer_list>
#include <string>

/// User-visible texts. The English text is the key of the catalogue.
namespace Messages {

/// Call it once, before the others. The language is that of the environment.
void prepare();

std::string text(const char* english);

/// The text with "%1" and so on replaced by the values, which are made safe for a terminal.
std::string text(const char* english, std::initializer_list<std::string> values);

} // namespace Messages
