#pragma once

#include "framework/redaction/PersonalNames.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <string>
#include <string_view>

/// Replaces what tells about a person in the texts of a support report: the facts of PersonalFacts,
/// addresses, names of wireless networks, what is played, and anything that looks like a secret. It
/// is better to replace a word too many than to miss one, but words that files are made of stay.
/// Counts what it has replaced. Any thread.
class Redactor {
  public:
    /// Knows nobody until learn().
    Redactor() = default;
    explicit Redactor(const platform::PersonalFacts& facts) : names_(facts) {}

    /// Not while another thread uses the object.
    void learn(const platform::PersonalFacts& facts) { names_ = PersonalNames(facts); }

    /// The text with each finding replaced by a word in brackets, wordsOf(). Takes time and memory
    /// in proportion to the text.
    [[nodiscard]] std::string redacted(std::string_view text) const;

    /// How many have been replaced so far.
    [[nodiscard]] std::size_t count(RedactionKind kind) const noexcept {
        return counts_[static_cast<std::size_t>(kind)];
    }

  private:
    class Pass;

    PersonalNames names_{platform::PersonalFacts{}};
    mutable std::array<std::atomic<std::size_t>, redactionKinds> counts_{};
};
