#pragma once

#include <QString>

namespace platform {

/// A path for word-wrapped text: it breaks after slashes only, so that names stay whole. For
/// display only, since it contains invisible joiners.
QString wrappablePath(const QString& path);

} // namespace platform
