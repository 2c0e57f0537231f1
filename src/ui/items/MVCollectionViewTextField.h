#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

/// One line of plain text, a little larger and heavier than others as far as an item is high enough
/// for that, cut with an ellipsis where it does not fit. It lies where lines begin in the window,
/// but runs its own way: its ellipsis is where it would go on. A click with the secondary button is
/// for what it lies on. Main thread only.
class MVCollectionViewTextField final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text)

  public:
    explicit MVCollectionViewTextField(QWidget* parent = nullptr);

    const QString& text() const noexcept { return text_; }
    void setText(const QString& text);

    QColor textColor() const { return color_; }
    void setTextColor(const QColor& color);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    QString text_;
    QColor color_;
};
