#pragma once

#include "look/window/MVCustomWindow.h"

/// Shows the program's name and version. Escape closes it. Main thread only.
class QNAboutBox final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// Above `parent`, which owns it.
    explicit QNAboutBox(QWidget* parent);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};
