#pragma once

#include <QString>
#include <QStringList>

/// What these versions of PipeWire and WirePlumber do in a way of their own, for whoever reads a
/// report: a sentence each. Of an empty version, which is an unknown one, nothing is said. Any
/// thread.
[[nodiscard]] QStringList soundQuirks(const QString& pipewire, const QString& wireplumber);
