#pragma once

#include <optional>
#include <string>

namespace support {

/// Gives an environment variable a value (nullopt: unsets it) while it lives. Make and destroy it
/// while no other thread reads the environment.
class ScopedVariable {
  public:
    ScopedVariable(std::string name, const std::optional<std::string>& value);
    ~ScopedVariable();
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    const std::string name_;
    std::optional<std::string> previous_;
};

} // namespace support
