#pragma once

#include "framework/redaction/RedactionKind.h"
#include "platform/processes/PersonalFacts.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Finds the facts of one person in texts, as whole words, in plain, percent-escaped and JSON form,
/// whatever the case. The names of an account or a machine that are too short, or that are ordinary
/// words of our files, are found only where a name must stand: in paths of homes, in user@host, in
/// fields of that meaning, at the host's place in lines of logs. Immutable; any thread.
class PersonalNames {
  public:
    explicit PersonalNames(const platform::PersonalFacts& facts);

    struct Found {
        RedactionKind kind;
        std::size_t length;
    };

    /// What begins at `place`. The caller ensures that no word goes on there.
    [[nodiscard]] std::optional<Found> at(std::string_view text, std::size_t place) const;

    /// Whether one of them may begin with that byte.
    [[nodiscard]] bool mayBeginWith(char byte) const noexcept {
        return !byFirstByte_[static_cast<unsigned char>(byte)].empty();
    }

  private:
    struct Form {
        RedactionKind kind;
        std::string text; ///< in lower case
        bool anywhere;
    };

    void add(RedactionKind kind, const std::string& text, bool anywhere);
    void addName(RedactionKind kind, const std::string& name);

    std::vector<Form> forms_;
    std::array<std::vector<std::size_t>, 256> byFirstByte_; // indices of forms_, the longest first
};
