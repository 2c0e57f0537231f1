#pragma once

#include "comm/MVCommAppValue.h"

#include <QPixmap>
#include <QPointer>
#include <QWidget>

/// The mute button of an item: a speaker that is coloured while its program plays, and struck
/// through while it is muted. A press toggles the record's mute, from where everybody else learns
/// it. Main thread only.
class MVMuteImageView final : public QWidget {
    Q_OBJECT

  public:
    using QWidget::QWidget;

    MVCommAppValue* app() const noexcept { return app_; }
    /// The record to show from now on; may be null, and may go before the view does.
    void setApp(MVCommAppValue* app);

    /// As a press does.
    void toggle();

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

  private:
    QPixmap image() const;

    QPointer<MVCommAppValue> app_;
};
