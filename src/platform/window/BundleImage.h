#pragma once

#include <QIcon>
#include <QImage>
#include <QSizeF>
#include <QString>

namespace platform {

/// Images of the main bundle's Resources by their names. The ending of the name does not matter:
/// for "speaker.pdf" the bundle may contain "speaker.svg" or "speaker.png"; SVG is preferred. A
/// missing or damaged image is null, with one line in the system log. Main thread only, with an
/// application object.

/// The image scaled to `size`, in pixels, with `pixelRatio` device pixels for each.
QImage bundleImage(const QString& name, const QSizeF& size, qreal pixelRatio);

/// The image at any size.
QIcon bundleIcon(const QString& name);

} // namespace platform
