#pragma once

namespace platform {

class DesktopSettings;

/// Whether a person wants things to move on the screen, by the desktop's settings as they are now;
/// true where nobody knows. The main thread only.
class DesktopAnimations {
  public:
    /// By the settings of the session; the first call makes them be asked for.
    static const DesktopAnimations& shared();

    /// `settings` must outlive it.
    explicit DesktopAnimations(const DesktopSettings& settings) : settings_(settings) {}

    bool areEnabled() const;

  private:
    const DesktopSettings& settings_;
};

/// Whether a person wants strong contrast; false where nobody knows.
bool isHighContrastWanted(const DesktopSettings& settings);

} // namespace platform
