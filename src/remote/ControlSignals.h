#pragma once

#include "remote/ControlTypes.h"

#include <QString>

/// Sends the standard signals about changes of the objects: InterfacesAdded and InterfacesRemoved
/// of the object manager, and PropertiesChanged for the properties that are signalled
/// (ProgramInterface). Main thread only.
class ControlSignals {
  public:
    /// Signals the differences between `programs` and `mixer`, the complete current state, and the
    /// previous call's. Before the first call the state is empty.
    void publish(const BusTree& programs, const QVariantMap& mixer);

  private:
    void tellGone(const BusTree& programs) const;
    void tellProgram(const QDBusObjectPath& path, const BusInterfaces& interfaces) const;

    BusTree programs_;
    QVariantMap mixer_;
};
