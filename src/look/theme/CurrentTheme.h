#pragma once

#include "look/theme/MVBlackTheme.h"

#include <QObject>

#include <memory>

/// The theme in use: the orange and brown one or, while the desktop or the user asks for more
/// contrast, a theme of the desktop's own colours. Main thread only, with an application object.
class CurrentTheme final : public QObject {
    Q_OBJECT

  public:
    /// Created on first use; never destroyed.
    static CurrentTheme& shared();

    /// The current theme. Valid until the next change.
    static const MVBlackTheme& theme() { return *shared().theme_; }

    /// A number that changes with every change of the theme: for cached pixmaps.
    static unsigned generation() { return shared().generation_; }

    /// Whether the user asks for more contrast, whatever the desktop's setting is.
    void setMoreContrast(bool isWanted);

    /// Windows call this when the desktop's colours have changed.
    void review();

  Q_SIGNALS:
    /// Everything must be repainted.
    void changed();

  private:
    CurrentTheme();

    const MVBlackTheme* theme_;
    std::unique_ptr<MVBlackTheme> highContrast_; // null while the default theme is in use
    unsigned generation_ = 0;
    bool isMoreContrastWanted_ = false;
};
