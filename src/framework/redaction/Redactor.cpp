#include "framework/redaction/Redactor.h"

#include "framework/redaction/AddressPatterns.h"
#include "framework/redaction/Characters.h"
#include "framework/redaction/FieldKeys.h"
#include "framework/redaction/TokenPatterns.h"

using namespace characters;

/// One way through a text.
class Redactor::Pass {
  public:
    Pass(const Redactor& redactor, std::string_view text) : redactor_(redactor), text_(text) {
        result_.reserve(text.size() + text.size() / 16);
    }

    std::string result() {
        while (place_ < text_.size()) {
            if (isWord(text_[place_]))
                passWord();
            else
                passOther();
        }
        result_.append(text_.substr(kept_));
        return std::move(result_);
    }

  private:
    void replace(RedactionKind kind, std::size_t begin, std::size_t end) {
        result_.append(text_.substr(kept_, begin - kept_));
        result_.append(wordsOf(kind).replacement);
        redactor_.counts_[static_cast<std::size_t>(kind)].fetch_add(1, std::memory_order_relaxed);
        kept_ = place_ = end;
    }

    bool replaceName() {
        if (!redactor_.names_.mayBeginWith(text_[place_]))
            return false;
        const auto found = redactor_.names_.at(text_, place_);
        if (found)
            replace(found->kind, place_, place_ + found->length);
        return found.has_value();
    }

    bool replacePattern(RedactionKind kind,
                        std::size_t (*lengthAt)(std::string_view, std::size_t) noexcept) {
        const std::size_t length = lengthAt(text_, place_);
        if (length > 0)
            replace(kind, place_, place_ + length);
        return length > 0;
    }

    /// At the begin of a word.
    void passWord() {
        const char first = text_[place_];
        if (replaceName())
            return;
        const bool mayBeAddress = isHex(first) || first == 'w';
        if (mayBeAddress && (replacePattern(RedactionKind::macAddress, &macAddressAt) ||
                             replacePattern(RedactionKind::ipAddress, &ipAddressAt)))
            return;
        const std::size_t end = endOfWord();
        constexpr std::size_t shortestToken = 8; // the first part of a UUID
        constexpr std::size_t shortestPrefix = 2;
        const bool mayBeToken = end - place_ >= shortestToken ||
                                (end - place_ == shortestPrefix && at(text_, end) == '-');
        if (mayBeToken && replacePattern(RedactionKind::token, &tokenAt))
            return;
        passUnderscores(end);
    }

    std::size_t endOfWord() const noexcept {
        std::size_t end = place_;
        while (end < text_.size() && isWord(text_[end]))
            ++end;
        return end;
    }

    /// Names of devices have addresses and serial numbers behind one.
    void passUnderscores(std::size_t end) {
        for (std::size_t i = place_; i < end; ++i) {
            if (text_[i] != '_')
                continue;
            const std::size_t length = macAddressAt(text_, i + 1);
            if (length > 0) {
                replace(RedactionKind::macAddress, i + 1, i + 1 + length);
                return;
            }
            const auto found = i + 1 < end && redactor_.names_.mayBeginWith(text_[i + 1])
                                   ? redactor_.names_.at(text_, i + 1)
                                   : std::nullopt;
            if (found && found->kind == RedactionKind::serialNumber) {
                replace(found->kind, i + 1, i + 1 + found->length);
                return;
            }
        }
        place_ = end;
    }

    void passOther() {
        const char byte = text_[place_];
        if (replaceName())
            return;
        if (byte == '=' || byte == ':' || byte == '>') {
            if (const auto field = fieldAt(text_, place_)) {
                replace(field->kind, field->value.begin, field->value.end);
                return;
            }
        }
        place_ += lengthOfEscape();
    }

    /// 1 if no escape stands here. A word may begin behind an escape, whose letters are none of it.
    std::size_t lengthOfEscape() const noexcept {
        const char byte = text_[place_];
        if (byte == '%' && isHex(at(text_, place_ + 1)) && isHex(at(text_, place_ + 2)))
            return 3;
        const char kind = byte == '\\' ? at(text_, place_ + 1) : '\0';
        constexpr std::size_t unicodeEscape = 6;
        if (kind == 'u' && place_ + unicodeEscape <= text_.size())
            return unicodeEscape;
        return kind == 'n' || kind == 't' || kind == 'r' || kind == 'b' || kind == 'f' ? 2 : 1;
    }

    const Redactor& redactor_;
    const std::string_view text_;
    std::string result_;
    std::size_t place_ = 0;
    std::size_t kept_ = 0; // what is before is in the result
};

std::string Redactor::redacted(std::string_view text) const {
    return Pass(*this, text).result();
}
