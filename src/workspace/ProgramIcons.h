#pragma once

#include "workspace/LetterTile.h"

#include <QHash>
#include <QIcon>
#include <QString>

/// The icons of programs, from the desktop's theme. Results are cached, so that the same arguments
/// return the same icon. Main thread only, with an application object.
class ProgramIcons {
  public:
    /// Adds the folders of icons without a theme to Qt's search paths.
    ProgramIcons();

    void setTileColors(const TileColors& colors);

    /// The icon for `icon`, a name in the theme or a file; else the theme's icon for the file name
    /// of `executable`; else a tile with the first letter of `name`. Never null.
    QIcon icon(const QString& icon, const QString& executable, const QString& name);

  private:
    QIcon find(const QString& icon, const QString& executable, const QString& name) const;

    TileColors colors_;
    QHash<QString, QIcon> known_;
};
