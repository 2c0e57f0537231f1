#pragma once

#include <QObject>
#include <QString>

/// What the preferences have to know of the helper that shows the icon in the menu bar. The helper
/// itself follows the preferences: whoever starts and ends it observes them. An interface, so that
/// the panes depend neither on that nor on an installed helper. Main thread only.
class MenuBarHelper : public QObject {
    Q_OBJECT

  public:
    /// Why there is no helper that could be shown, as text for the user; empty if there is one.
    [[nodiscard]] virtual QString whyUnavailable() const = 0;

    /// Whether it is starting or ending just now, so that it takes no other order.
    [[nodiscard]] virtual bool isChanging() const = 0;

  Q_SIGNALS:
    /// One of the above is different.
    void changed();
};
