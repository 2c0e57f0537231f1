#pragma once

namespace platform {

class DesktopSettings;

/// Whether animations are enabled in the desktop's current settings; true if unknown. Main thread
/// only.
class DesktopAnimations {
  public:
    /// Uses the settings of the session, which the first call requests.
    static const DesktopAnimations& shared();

    /// `settings` must outlive it.
    explicit DesktopAnimations(const DesktopSettings& settings) : settings_(settings) {}

    [[nodiscard]] bool areEnabled() const;

  private:
    const DesktopSettings& settings_;
};

/// Whether high contrast is enabled; false if unknown.
[[nodiscard]] bool isHighContrastWanted(const DesktopSettings& settings);

} // namespace platform
