#include "comm/MVCommConnectedProcess.h"

#include "comm/MVComm.h"

QList<MVCommConnectedProcess> MVCommCopyConnectedProcesses(const MVComm& comm) {
    const QList<MVCommConnectionProcess> connections = comm.connectionProcesses();
    QList<MVCommConnectedProcess> processes;
    processes.reserve(connections.size());
    for (const MVCommConnectionProcess& each : connections) {
        if (!each.name.isEmpty())
            processes.append({each.pid, each.name, each.path, each.name == kMVCommAudioDaemonName});
    }
    return processes;
}

QList<MVCommConnectedProcess> MVCommCopyConnectedProcesses() {
    return MVCommCopyConnectedProcesses(MVComm::sharedComm());
}
