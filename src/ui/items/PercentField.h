#pragma once

#include "ui/items/TypedVolume.h"

#include <QLineEdit>

/// The field in which a person types the volume of a program. Enter hands over what it means; a
/// text that means nothing stays, with a tip that says what would. Escape, or taking the focus
/// away, leaves it. Main thread only.
class PercentField final : public QLineEdit {
    Q_OBJECT

  public:
    /// Shows the percent, marked to be replaced.
    PercentField(int percent, QWidget* parent);

    QSize sizeHint() const override;

  Q_SIGNALS:
    /// The first of these ends its use.
    void entered(const TypedVolume& volume);
    void left();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    void enter();
    void leave();

    bool isDone_ = false;
};
