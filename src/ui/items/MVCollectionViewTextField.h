#pragma once

#include <QColor>
#include <QString>
#include <QWidget>

/// One line of plain text, a little larger and bolder than usual if the item is high enough, cut
/// with an ellipsis if it does not fit. It is aligned to the start of the window's reading
/// direction, but keeps its own text direction, at whose end the ellipsis is. Secondary clicks go
/// to its parent. Main thread only.
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
