#pragma once

#include <QIcon>
#include <QImage>
#include <QSizeF>
#include <QString>

namespace platform {

/// Images of the main bundle's Resources by their names. A name is only a name: of "speaker.pdf"
/// the bundle may hold a drawing, "speaker.svg", or a picture, "speaker.png", and the drawing is
/// taken when it holds both. A missing or damaged one is null, with one line in the system log. The
/// main thread only, with an application object.

/// Drawn to fill `size`, in pixels, with `pixelRatio` device pixels for each.
QImage bundleImage(const QString& name, const QSizeF& size, qreal pixelRatio);

/// At any size.
QIcon bundleIcon(const QString& name);

} // namespace platform
