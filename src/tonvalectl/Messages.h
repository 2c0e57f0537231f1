#pragma once

#include <initializer_list>
#include <string>

/// What a person reads. The English text is the key of the catalogue.
namespace Messages {

/// To be called once, before the others: the language is that of the environment.
void prepare();

std::string text(const char* english);

/// The text with "%1" and so on filled in by what the numbers stand for. What would harm a terminal
/// is made harmless.
std::string text(const char* english, std::initializer_list<std::string> values);

} // namespace Messages
