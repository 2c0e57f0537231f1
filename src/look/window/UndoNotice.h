#pragma once

#include <QTimer>
#include <QWidget>

class QLabel;
class BarButton;

/// A line at the lower edge of its parent that shows the last action and offers undo. Disappears
/// after a while, but not while it has the mouse or the focus. Main thread only.
class UndoNotice final : public QWidget {
    Q_OBJECT

  public:
    explicit UndoNotice(QWidget* parent);

    enum class Undo { possible, impossible };

    void tell(const QString& text, Undo undo = Undo::possible);

    /// Moves it to the lower edge of the parent.
    void place();

  Q_SIGNALS:
    void undoWanted();

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    void colorText();
    void goUnlessUsed();

    QLabel* const label_;
    BarButton* const button_;
    QTimer time_;
};
