#pragma once

#include "ui/preferences/MenuBarHelper.h"

#include <functional>

/// The helper as the preferences see it: whether this installation has one, and whether it is being
/// started or ended just now. Main thread only.
class HelperState final : public MenuBarHelper {
    Q_OBJECT

  public:
    /// `showHelper` starts or ends the helper, and may serve events meanwhile. An empty
    /// `whyUnavailable` means that there is one.
    HelperState(std::function<void(bool isShown)> showHelper, QString whyUnavailable);

    [[nodiscard]] QString whyUnavailable() const override { return whyUnavailable_; }
    [[nodiscard]] bool isChanging() const override { return changes_ > 0; }

    /// Starts or ends the helper; returns when that is done.
    void change(bool isShown);

  private:
    const std::function<void(bool isShown)> showHelper_;
    const QString whyUnavailable_;
    int changes_ = 0; // one within the other, since events are served
};
