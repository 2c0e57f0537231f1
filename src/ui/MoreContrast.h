#pragma once

#include "platform/defaults/UserDefaults.h"

class VolumeMenu;

/// The preference for more contrast: applies it to the theme, shows it in the window's menu, and
/// sets it from there. Main thread only.
class MoreContrast {
  public:
    /// Both must outlive the object.
    MoreContrast(platform::UserDefaults& defaults, VolumeMenu& menu);

  private:
    void show() const;

    platform::UserDefaults& defaults_;
    VolumeMenu& menu_;
    const platform::DefaultsObservation observation_;
};
