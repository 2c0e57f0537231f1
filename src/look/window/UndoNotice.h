#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class QPushButton;

/// A line at the lower edge of its parent that says what has just been done and offers the way
/// back. Goes by itself after a while, but not while the mouse or the focus is on it. Main thread
/// only.
class UndoNotice final : public QWidget {
    Q_OBJECT

  public:
    explicit UndoNotice(QWidget* parent);

    void tell(const QString& text);

    /// The lower edge of the parent as it is now.
    void place();

  Q_SIGNALS:
    void undoWanted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void colorText();
    void goUnlessUsed();

    QLabel* const label_;
    QPushButton* const button_;
    QTimer time_;
};
