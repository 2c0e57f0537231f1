#pragma once

/// MARKED_TEXT("Texts", "English"): the English text itself, put into the catalogues for whoever
/// shows it later: "Texts" in the application, "PlainTexts" in programs without Qt.
#define MARKED_TEXT(catalogue, english) english
