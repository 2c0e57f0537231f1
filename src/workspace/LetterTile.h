#pragma once

#include <QColor>
#include <QIcon>
#include <QList>
#include <QString>

/// The colours of letter tiles.
struct TileColors {
    QColor tile = {0x60, 0x68, 0x70};
    QColor letter = {0xe8, 0xea, 0xec};
    QList<QColor> byName =
        {}; ///< of which each name has one, always the same; none: `tile` for all
};

/// An icon for a program that has none: the first letter of its name on a tile. Sharp at every
/// size. The main thread only, with an application object.
QIcon letterTile(const QString& name, const TileColors& colors);
