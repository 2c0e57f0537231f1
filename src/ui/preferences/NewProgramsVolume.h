#pragma once

#include "platform/defaults/UserDefaults.h"

#include <QWidget>

class QCheckBox;
class QSpinBox;
class RememberedApps;

/// The row for the volume of programs that were never seen before: off, or a percent. Follows
/// changes made elsewhere. Main thread only.
class NewProgramsVolume final : public QWidget {
    Q_OBJECT

  public:
    /// `defaults` are those that `apps` keeps it in; both must outlive the widget.
    NewProgramsVolume(RememberedApps& apps, platform::UserDefaults& defaults);

    /// Takes what has been typed, if that is not taken yet.
    void commit();

  private:
    void show();
    void store();

    RememberedApps& apps_;
    QCheckBox* const isWanted_;
    QSpinBox* const percent_;
    const platform::DefaultsObservation observation_;
};
