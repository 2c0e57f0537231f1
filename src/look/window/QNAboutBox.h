#pragma once

#include "look/window/MVCustomWindow.h"

/// Says what the program is, and in which version. Escape closes it. Main thread only.
class QNAboutBox final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// Above `parent`, which owns it.
    explicit QNAboutBox(QWidget* parent);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};
