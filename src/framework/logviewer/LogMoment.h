#pragma once

#include "framework/logviewer/LogDocument.h"

#include <QString>

#include <optional>

namespace QN::logviewer {

/// A time that a person has entered: "9:41", "09:41:05", "2014-03-07 9:41". Nothing if it is none.
[[nodiscard]] std::optional<LogDocument::Moment> momentOf(const QString& text);

} // namespace QN::logviewer
