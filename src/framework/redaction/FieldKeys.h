#pragma once

#include "framework/redaction/RedactionKind.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

/// Fields, in whatever form files have them: "key=value", "key: value", `"key": "value"`,
/// "<key>value</key>", `<x id="key" value="value"/>`.

/// The key of the field whose value begins at `place`, behind a quote if there is one, in lower
/// case and with '_' for '-'. Empty if none does.
[[nodiscard]] std::string keyBefore(std::string_view text, std::size_t place);

/// The kind of the values of a key that are always replaced.
[[nodiscard]] std::optional<RedactionKind> kindOfKey(std::string_view key) noexcept;

/// Whether the values of a key are names of accounts, or of machines.
[[nodiscard]] bool isUserKey(std::string_view key) noexcept;
[[nodiscard]] bool isHostKey(std::string_view key) noexcept;

/// A part of a text.
struct TextRange {
    std::size_t begin;
    std::size_t end;
};

struct Field {
    RedactionKind kind;
    TextRange value;
};

/// The field to be replaced whose separator ('=', ':' or '>') stands at `place`.
[[nodiscard]] std::optional<Field> fieldAt(std::string_view text, std::size_t place);
