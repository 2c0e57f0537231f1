#pragma once

#include <QString>
#include <QStringList>

class QCheckBox;
class QProgressBar;
class QSlider;
class VolumeWindow;

namespace support {

/// The names of the rows that a volume window shows, from top to bottom.
QStringList rowNames(const VolumeWindow& window);

/// The controls of one row of a volume window; null, all of them, when it has no such row. They
/// belong to the window.
struct RowProbe {
    RowProbe(const VolumeWindow& window, const QString& name);

    QSlider* slider = nullptr;
    QProgressBar* level = nullptr;
    QCheckBox* mute = nullptr;
};

/// What the window says in place of rows; empty when it shows rows.
QString notice(const VolumeWindow& window);

} // namespace support
