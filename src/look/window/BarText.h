#pragma once

#include <QString>
#include <QWidget>

/// Text in as many lines as fit; if there is more, the last line ends in an ellipsis and the tool
/// tip has the full text. Main thread only.
class BarText final : public QWidget {
    Q_OBJECT
    Q_PROPERTY(QString text READ text)

  public:
    using QWidget::QWidget;

    const QString& text() const noexcept { return text_; }
    void setText(const QString& text);

    QSize minimumSizeHint() const override;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    QStringList lines() const;

    QString text_;
};
