#pragma once

#include "model/MVCommAppValue.h"

#include "ui/items/ItemControl.h"

#include <QAccessible>
#include <QPointer>

/// The mute button of an item: a speaker that is coloured while its program plays, and struck
/// through while it is muted. A press toggles the record's mute, from where everybody else learns
/// it, and is a line of the log. Space is left to the list, which knows whether it belongs to a
/// name that is being typed. Main thread only.
class MVMuteImageView final : public ItemControl {
    Q_OBJECT

  public:
    explicit MVMuteImageView(QWidget* parent = nullptr);

    MVCommAppValue* app() const noexcept { return app_; }
    /// The record to show from now on; may be null, and may go before the view does.
    void setApp(MVCommAppValue* app);

    /// Of a program that cannot be controlled a mute that is remembered can be taken back, and
    /// nothing else. Then the button is pale, but keeps the focus, so that keys still get there.
    void setControllable(bool controllable);

    /// Whether a press does anything.
    bool isOperable() const { return app_ != nullptr && (isControllable_ || app_->muted()); }

    /// As a press does.
    void toggle();

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void announce(const QAccessible::State& changed);

    QPointer<MVCommAppValue> app_;
    bool isControllable_ = true;
};
