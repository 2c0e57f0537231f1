#pragma once

#include <QPalette>

/// The colours of the current theme for the toolkit's own controls: check boxes, fields and tables.
/// With high contrast it is the desktop's palette. Ask again when CurrentTheme has changed. Main
/// thread only.
[[nodiscard]] QPalette themePalette();
