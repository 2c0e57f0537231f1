#pragma once

#include <QList>
#include <QRect>
#include <QSizeF>
#include <QString>

class MVCommAppValue;

/// The interface through which the volume controller updates the window that shows its records: one
/// item for each, in their order. The window calls the controller directly for user actions. Main
/// thread only.
class AppVolumeView {
  public:
    AppVolumeView() = default;
    virtual ~AppVolumeView() = default;
    AppVolumeView(const AppVolumeView&) = delete;
    AppVolumeView& operator=(const AppVolumeView&) = delete;

    /// Called before and after each change of the list. Records that are not in the new list have
    /// been destroyed by the second call; records that are in both keep their item.
    virtual void appsWillChange() = 0;
    virtual void appsDidChange(const QList<MVCommAppValue*>& apps) = 0;

    /// The item at `index` has another level: `level100` percent, of `level` within 0 to 1. The
    /// view sets the record's activity; without a view the controller does.
    virtual void handleActivity(qsizetype index, qint64 level100, float level) = 0;

    /// Percent, mute, or the reason why it cannot be set have changed for the item at `index`, but
    /// not by a user action in it; ask the controller for them.
    virtual void itemDidChange(qsizetype index) = 0;

    /// In pixels. Queried whenever they are needed.
    [[nodiscard]] virtual double itemHeight() const = 0;
    [[nodiscard]] virtual double titleBarHeight() const = 0;

    virtual void setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) = 0;

    /// The window's frame on the desktop. setFrame() may move a window that would not be visible.
    [[nodiscard]] virtual QRect frame() const = 0;
    virtual void setFrame(const QRect& frame) = 0;

    /// Whether the window is maximised; its frame is then the one that it has otherwise.
    [[nodiscard]] virtual bool fillsScreen() const { return false; }
    virtual void setFillsScreen() {}
};
