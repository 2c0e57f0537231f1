#pragma once

#include "comm/MVCommMessages.h"

#include <QList>
#include <QString>

#include <cstdint>

class MVComm;

/// The name of the process of the system's sound effects.
inline const QString kMVCommAudioDaemonName =
    QLatin1String(kMVCommNotificationSoundsName.data(), kMVCommNotificationSoundsName.size());

/// A program that is connected through its plug-in and has checked in.
struct MVCommConnectedProcess {
    std::uint32_t pid = 0;
    QString name; ///< never empty
    QString path; ///< full path of the executable
    bool isAudioDaemon = false;
};

/// The façade's processes in their order, without those that have not checked in. Main thread.
QList<MVCommConnectedProcess> MVCommCopyConnectedProcesses(const MVComm& comm);

/// Those of the shared façade.
QList<MVCommConnectedProcess> MVCommCopyConnectedProcesses();
