#pragma once

#include "look/theme/MVBlackTheme.h"

#include <QObject>

#include <memory>

/// Which theme is in use: the orange and brown one, or, while the desktop is set to strong
/// contrast, one of the desktop's own colours. Main thread only, with an application object.
class CurrentTheme final : public QObject {
    Q_OBJECT

  public:
    /// Made when it is first asked for; never destroyed.
    static CurrentTheme& shared();

    /// The theme that is in use now. Valid until the next change.
    static const MVBlackTheme& theme() { return *shared().theme_; }

    /// Another number after every change: for pictures that are kept.
    static unsigned generation() { return shared().generation_; }

    /// For windows that are told of new colours of the desktop.
    void review();

  Q_SIGNALS:
    /// Everything is to be drawn anew.
    void changed();

  private:
    CurrentTheme();

    const MVBlackTheme* theme_;
    std::unique_ptr<MVBlackTheme> highContrast_; // null while the usual one is in use
    unsigned generation_ = 0;
};
