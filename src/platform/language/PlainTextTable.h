#pragma once

#include <span>

namespace platform {

struct PlainTextRow {
    const char* catalogue; ///< "de_AT"
    const char* english;
    const char* translated;
};

/// The rows of all languages, made from the catalogues in resources/translations by the build.
std::span<const PlainTextRow> plainTextTable() noexcept;

} // namespace platform
