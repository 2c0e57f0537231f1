#pragma once

namespace platform {

class CrashWriter;

/// Writes a line "module BASE BUILD-ID" for the program and each library that it has loaded, with
/// "-" for one without a build id. An update may replace their files before the program dies.
void writeLoadedModules(CrashWriter& out);

} // namespace platform
