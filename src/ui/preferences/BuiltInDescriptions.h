#pragma once

#include <QString>

/// What the program of a built-in entry of the ignore list is, in a few words for the user; empty
/// for an unknown name. Most of these programs come from another desktop.
[[nodiscard]] QString builtInDescription(const QString& name);
