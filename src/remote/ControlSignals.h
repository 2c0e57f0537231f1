#pragma once

#include "remote/ControlTypes.h"

#include <QString>

/// Tells on the session bus how the objects change, by the standard signals: InterfacesAdded and
/// InterfacesRemoved of the object manager, and PropertiesChanged, for what is signalled
/// (ProgramInterface). Main thread only.
class ControlSignals {
  public:
    /// Tells what `programs` and `mixer`, which are all that there is now, differ in from the last
    /// time. The first time there was nothing.
    void publish(const BusTree& programs, const QVariantMap& mixer);

  private:
    void tellGone(const BusTree& programs) const;
    void tellProgram(const QDBusObjectPath& path, const BusInterfaces& interfaces) const;

    BusTree programs_;
    QVariantMap mixer_;
};
