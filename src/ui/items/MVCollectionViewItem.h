#pragma once

#include "model/MVCommAppValue.h"
#include "ui/items/MVCollectionItemBackgroundView.h"

#include <QPointer>
#include <QWidget>

#include <functional>
#include <memory>

class AppVolumeController;
class MVCollectionViewImageView;
class MVCollectionViewTextField;
class MVMuteImageView;
class MVVolumeSlider;
class QMenu;

namespace platform {
class NotificationObserver;
}

/// One program in the volume window: icon, name, mute button, and a slider that also shows how loud
/// the program is. Makes changes of its record, and lines of the log, of what a person does; shows
/// what others change without making anything of it. Main thread only.
class MVCollectionViewItem final : public MVCollectionItemBackgroundView {
    Q_OBJECT
    Q_PROPERTY(QString displayName READ displayName)
    Q_PROPERTY(
        QColor displayNameTextColor READ displayNameTextColor NOTIFY displayNameTextColorChanged)

  public:
    /// What an item needs of the rest of the program. All of it must outlive the item.
    struct Dependencies {
        AppVolumeController& controller;
        std::function<void(const QString& processName)> ignore;
        std::function<bool()> mayBeep;                  ///< whether the person wants sample sounds
        std::function<void(float volume)> beepAtVolume; ///< 0 to 1
        /// What takes back `ignore`; null when nothing does.
        std::function<void(const QString& processName)> stopIgnoring = {};
    };

    MVCollectionViewItem(const Dependencies& dependencies, MVCommAppValue& app,
                         QWidget* parent = nullptr);
    ~MVCollectionViewItem() override;

    /// Null when the record has gone; another one may be at its place.
    MVCommAppValue* representedObject() const noexcept { return app_; }

    QString displayName() const;
    QIcon displayIcon() const;
    QColor displayNameTextColor() const;

    MVVolumeSlider& slider() const noexcept { return *slider_; }
    MVMuteImageView& muteView() const noexcept { return *muteView_; }
    MVCollectionViewTextField& label() const noexcept { return *label_; }
    MVCollectionViewImageView& iconView() const noexcept { return *iconView_; }

    /// Shows the record as it is now, without calling anybody.
    void updateControls();

    /// A level of the program, in whole percent and as it is shown, 0 to 1.
    void handleActivity(qint64 level100, float level);

    /// Puts the program on the ignore list.
    void ignore();

    /// What a click with the secondary button opens; belongs to the caller.
    QMenu* makeContextMenu(QWidget* parent);

    /// What the tool tip says there: of the slider and the mute button why they cannot be used, of
    /// a slider that can be moved the percent, elsewhere the program's name and its description.
    QString tipAt(const QPoint& place) const;

    /// The program's path, why it is called so, and why its volume cannot be set, each on a line;
    /// without what is not known.
    QString description() const;

    /// The percent, whether the program plays, and whether it is muted, in one line.
    QString state() const;

    /// Why the program cannot be controlled; empty when it can.
    QString reasonNotControllable() const;

    /// Says beside the mouse that programs in a sandbox cannot be controlled, and takes that away
    /// again; for whoever knows it of this one.
    void mouseEntered();
    static void mouseExited();

  Q_SIGNALS:
    void displayNameTextColorChanged();

  protected:
    bool event(QEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

  private:
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
    const std::unique_ptr<platform::NotificationObserver> releaseObserver_;
};
