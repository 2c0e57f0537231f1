#pragma once

#include <QIcon>
#include <QSize>

/// The images of the icon in the menu bar (tray): the program's own icon in colour, and two of one
/// colour. As large as iconSize() and sharp on dense screens, where they hold more pixels. Null
/// when the bundle does not have the image. Main thread only.
namespace TNMenuBarIcon {

/// Pixels.
QSize iconSize();

QIcon colorIcon();
QIcon grayscaleIcon();
QIcon alternativeIcon();

} // namespace TNMenuBarIcon
