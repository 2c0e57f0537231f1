#pragma once

#include "model/MVCommAppValue.h"

#include "ui/items/ItemControl.h"

#include <QAccessible>
#include <QPointer>

/// The mute button of an item: a speaker that is coloured while its program plays, and crossed out
/// while it is muted. A press toggles the record's mute, whose signal informs all others, and is
/// logged. The list handles Space, since it may be part of a name that is being typed. Main thread
/// only.
class MVMuteImageView final : public ItemControl {
    Q_OBJECT

  public:
    explicit MVMuteImageView(QWidget* parent = nullptr);

    MVCommAppValue* app() const noexcept { return app_; }
    /// Sets the record to show; may be null, and may be destroyed before the view.
    void setApp(MVCommAppValue* app);

    /// If a program cannot be controlled, only a stored mute can be undone. The disabled button is
    /// pale, but can have the focus, so that keys still work.
    void setControllable(bool controllable);

    /// Whether a press does anything.
    bool isOperable() const { return app_ != nullptr && (isControllable_ || app_->muted()); }

    /// Does what a press does.
    void toggle();

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void announce(const QAccessible::State& changed);

    QPointer<MVCommAppValue> app_;
    bool isControllable_ = true;
    bool isPressed_ = false;
};
