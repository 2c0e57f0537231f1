#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QLineEdit;
class QToolButton;

/// A bar for one text that the user enters, with a message beside it. Escape closes it. Main thread
/// only.
class LogInputBar final : public QWidget {
    Q_OBJECT

  public:
    /// Hidden at first. `hasSteps`: with buttons for the next and the previous one.
    LogInputBar(const QString& title, bool hasSteps, QWidget* parent = nullptr);

    /// Shows it, with the text selected and the keyboard in it.
    void open();

    [[nodiscard]] QString text() const;
    void setMessage(const QString& message);

  Q_SIGNALS:
    void edited(const QString& text);
    void entered();
    void nextWanted();
    void previousWanted();
    void closed();

  protected:
    void keyPressEvent(QKeyEvent* event) override;

  private:
    void addButton(QHBoxLayout& layout, Qt::ArrowType arrow, const QString& name,
                   void (LogInputBar::*wanted)());
    void close();

    QLineEdit* const input_;
    QLabel* const message_;
};
