#pragma once

#include <QList>
#include <QString>

class AppVolumeController;
class Workspace;

/// A program by the name that is displayed, and by the one that the ignore list compares.
struct KnownProgram {
    QString displayName;
    QString processName;
};

/// The programs that run or were ever seen, and the sound effects; each displayed name once, sorted
/// ignoring case. Main thread only.
[[nodiscard]] QList<KnownProgram> knownPrograms(AppVolumeController& controller,
                                                const Workspace& workspace);
