#pragma once

#include "workspace/LetterTile.h"

#include <QHash>
#include <QIcon>
#include <QString>

/// The icons of programs, from the desktop's theme. What has been answered is kept, so that the
/// same question has the same icon. The main thread only, with an application object.
class ProgramIcons {
  public:
    /// Has Qt look also where programs without a theme put their icons.
    ProgramIcons();

    void setTileColors(const TileColors& colors);

    /// The one of the name in the theme or of the file that `icon` is; else the theme's for the
    /// file name of `executable`; else a tile with the first letter of `name`. Never null.
    QIcon icon(const QString& icon, const QString& executable, const QString& name);

  private:
    QIcon find(const QString& icon, const QString& executable, const QString& name) const;

    TileColors colors_;
    QHash<QString, QIcon> known_;
};
