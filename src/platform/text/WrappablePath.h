#pragma once

#include <QString>

namespace platform {

/// A path for a text that is wrapped into lines: it breaks after slashes only, so that each name
/// stays whole. For people's eyes; joiners that nobody sees make it another path.
QString wrappablePath(const QString& path);

} // namespace platform
