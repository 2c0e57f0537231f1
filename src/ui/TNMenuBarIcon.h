#pragma once

#include <QIcon>
#include <QSize>

/// The images of the menu bar (tray) icon: the program's own icon in colour, and two monochrome
/// ones. Their size is iconSize(), with more pixels on high-DPI screens. Null if the bundle does
/// not have the image. Main thread only.
namespace TNMenuBarIcon {

/// Pixels.
QSize iconSize();

QIcon colorIcon();
QIcon grayscaleIcon();
QIcon alternativeIcon();

} // namespace TNMenuBarIcon
