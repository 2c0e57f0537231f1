#pragma once

#include "look/window/BarButton.h"
#include "look/window/MVCustomWindow.h"

#include <QStringList>

#include <functional>

class QLabel;
class QLineEdit;

/// The sheet of the Ignore List pane in which the user types a name. Its window takes no input
/// meanwhile. Main thread only.
class AddIgnoredAppSheet final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// The tags of the buttons, and the code with which the sheet ends.
    enum Tag { cancel = 0, confirm = 1 };

    /// What there is to know about a name that has been typed, as text for the user; may be empty.
    using Warning = std::function<QString(const QString& name)>;

    /// On the window, which owns it.
    AddIgnoredAppSheet(QWidget& window, Warning warning);

    /// Opens it with an empty field, which completes these names.
    void begin(const QStringList& names);

    /// Closes it, and reports the end.
    void end(int tag);

    /// Warns anew, as the reasons may be others.
    void review();

    QLineEdit& addTextField() const noexcept { return *addTextField_; }
    BarButton& addButton() const noexcept { return *addButton_; }
    BarButton& cancelButton() const noexcept { return *cancelButton_; }

  Q_SIGNALS:
    /// A button has been pressed, or a key for it. The sheet waits to be ended.
    void action(int tag);
    void ended(int tag);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    void controlTextDidChange();
    void fit();

    const Warning warning_;
    QLineEdit* const addTextField_;
    QLabel* const note_;
    BarButton* const cancelButton_;
    BarButton* const addButton_;
    int tag_ = cancel;
};
