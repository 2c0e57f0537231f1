#pragma once

#include <QString>

#include <filesystem>

/// The texts that people read in windows and alerts, in their language. The English text is the key
/// of the catalogues in resources/translations, so it must be a literal here or in MARKED_TEXT().
/// What the log says and what programs tell each other stays English. The catalogues know the
/// namespace by the name that callers write: always "Texts::tr".
namespace Texts {

/// Loads the catalogues in `folder` for the languages of the environment, and Qt's own for its
/// parts. A language without a catalogue is left out; a damaged catalogue is too, with a line in
/// the system log. Call it on the main thread, once the application object exists.
void load(const std::filesystem::path& folder);

/// The English text itself where no catalogue has it. Any thread.
QString tr(const char* english);

} // namespace Texts
