#pragma once

#include <QList>
#include <QRect>
#include <QSizeF>
#include <QString>

class MVCommAppValue;

/// What the volume controller tells the window that shows its records: one item for each, in their
/// order. Gestures go the other way, by the controller's own operations. Main thread only.
class AppVolumeView {
  public:
    AppVolumeView() = default;
    virtual ~AppVolumeView() = default;
    AppVolumeView(const AppVolumeView&) = delete;
    AppVolumeView& operator=(const AppVolumeView&) = delete;

    /// Around each change of the list. Records that are not in the new one have gone by the second
    /// call; records that are in both keep their item.
    virtual void appsWillChange() = 0;
    virtual void appsDidChange(const QList<MVCommAppValue*>& apps) = 0;

    /// The item at `index` has another level: `level100` percent, of `level` within 0 to 1. The
    /// view sets the record's activity; without a view the controller does.
    virtual void handleActivity(qsizetype index, qint64 level100, float level) = 0;

    /// Of the item at `index`, the percent, the mute, or the reason why it cannot be set are others
    /// without a gesture in it; the controller tells them.
    virtual void itemDidChange(qsizetype index) = 0;

    /// Pixels. They are asked for whenever they are needed.
    virtual double itemHeight() const = 0;
    virtual double titleBarHeight() const = 0;

    virtual void setSizeLimits(const QSizeF& minimum, const QSizeF& maximum) = 0;

    /// Where the window is on the desktop. One that would not be seen there may be put elsewhere.
    virtual QRect frame() const = 0;
    virtual void setFrame(const QRect& frame) = 0;
};
