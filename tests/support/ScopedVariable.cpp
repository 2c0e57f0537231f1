#include "support/ScopedVariable.h"

#include <cstdlib>
#include <utility>

namespace support {

namespace {

void assign(const std::string& name, const std::optional<std::string>& value) {
    if (value)
        ::setenv(name.c_str(), value->c_str(), 1);
    else
        ::unsetenv(name.c_str());
}

} // namespace

ScopedVariable::ScopedVariable(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* const previous = std::getenv(name_.c_str()))
        previous_ = previous;
    assign(name_, value);
}

ScopedVariable::~ScopedVariable() {
    assign(name_, previous_);
}

} // namespace support
