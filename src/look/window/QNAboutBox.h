#pragma once

#include "look/window/MVCustomWindow.h"

/// Shows the program's name and version on the theme's gradient. Escape closes it. Main thread
/// only.
class QNAboutBox final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// Above `parent`, which owns it. `shows64BitMark`: beside the version stands that the program
    /// is for 64 bit.
    QNAboutBox(QWidget* parent, bool shows64BitMark);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
};
