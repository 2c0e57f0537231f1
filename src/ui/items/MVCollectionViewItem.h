#pragma once

#include "model/MVCommAppValue.h"
#include "ui/items/MVCollectionItemBackgroundView.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class AppVolumeController;
class ItemStatus;
class MVCollectionViewImageView;
class MVCollectionViewTextField;
class MVMuteImageView;
class MVVolumeSlider;
class PercentField;
class QMenu;
struct TypedVolume;

namespace platform {
class NotificationObserver;
}

/// One program in the volume window: icon, name, mute button, and a slider that also shows the
/// program's level. Applies user actions to its record and logs them; changes from elsewhere are
/// only shown. Main thread only.
class MVCollectionViewItem final : public MVCollectionItemBackgroundView {
    Q_OBJECT
    Q_PROPERTY(QString displayName READ displayName)
    Q_PROPERTY(
        QColor displayNameTextColor READ displayNameTextColor NOTIFY displayNameTextColorChanged)

  public:
    /// What an item needs from the rest of the program. All of it must outlive the item.
    struct Dependencies {
        AppVolumeController& controller;
        std::function<void(const QString& processName)> ignore;
        std::function<bool()> mayBeep;                  ///< whether sample sounds are enabled
        std::function<void(float volume)> beepAtVolume; ///< 0 to 1
        /// Undoes `ignore`; may be null.
        std::function<void(const QString& processName)> stopIgnoring = {};
    };

    MVCollectionViewItem(const Dependencies& dependencies, MVCommAppValue& app,
                         QWidget* parent = nullptr);
    ~MVCollectionViewItem() override;

    /// Null if the record was destroyed; another one may have taken its address.
    MVCommAppValue* representedObject() const noexcept { return app_; }

    QString displayName() const;
    QIcon displayIcon() const;
    QColor displayNameTextColor() const;

    MVVolumeSlider& slider() const noexcept { return *slider_; }
    MVMuteImageView& muteView() const noexcept { return *muteView_; }
    MVCollectionViewTextField& label() const noexcept { return *label_; }
    MVCollectionViewImageView& iconView() const noexcept { return *iconView_; }
    ItemStatus& status() const noexcept { return *status_; }

    /// The field in which the percent is typed; null while there is none.
    PercentField* percentField() const noexcept { return field_; }

    /// Makes it the current one: the slider gets the focus, or the mute button where it cannot.
    void select(Qt::FocusReason reason);

    /// Shows the record's current state, without calling handlers.
    void updateControls();

    /// Shows a level of the program, given in whole percent and as a fraction from 0 to 1.
    void handleActivity(qint64 level100, float level);

    /// Puts the program on the ignore list.
    void ignore();

    /// Sets the volume to 100 percent, as the mouse would.
    void reset();

    /// Opens the field in which the percent is typed, if the program can be controlled. With
    /// `reason` the slider gets the focus afterwards.
    void editPercent(Qt::FocusReason reason);

    /// The context menu; owned by the caller.
    QMenu* makeContextMenu(QWidget* parent);

    /// The tool tip for a position: for disabled controls the reason, for an enabled slider the
    /// percent and its last change, elsewhere the program's name and its description.
    QString tipAt(const QPoint& place) const;

    /// The program's path, the reason for its name, its last change, and why its volume cannot be
    /// set, as far as known, each on a line.
    QString description() const;

    /// Percent, playing or not, muted or not, in one line.
    QString state() const;

    /// Why the program cannot be controlled; empty if it can.
    QString reasonNotControllable() const;

    /// Show and hide a tool tip that says that programs in a sandbox cannot be controlled, for
    /// callers who know that this program is one.
    void mouseEntered();
    static void mouseExited();

  Q_SIGNALS:
    void displayNameTextColorChanged();

  protected:
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void lightChanged(bool isLit) override;

  private:
    void layOut();
    void showStatus();
    void setTyped(const TypedVolume& volume);
    void closeField(Qt::FocusReason reason);
    QString lastChange() const;
    void sliderAction();
    void volumeSliderDidReleaseMouse();
    void wasMuted();
    void activityCameOrWent(bool hasActivity);
    void announceTextColor();

    const Dependencies dependencies_;
    const QPointer<MVCommAppValue> app_;
    MVCollectionViewImageView* const iconView_;
    MVCollectionViewTextField* const label_;
    MVMuteImageView* const muteView_;
    MVVolumeSlider* const slider_;
    ItemStatus* const status_;
    PercentField* field_ = nullptr;
    const std::unique_ptr<platform::NotificationObserver> releaseObserver_;
};
