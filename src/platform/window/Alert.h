#pragma once

#include <QString>

class QWidget;

namespace platform {

/// A question or message to the person: title, explanation, and one to three buttons, of which
/// empty texts stand for none.
struct Alert {
    enum Button { other = -1, alternate = 0, standard = 1 };
    enum class Kind { plain, warning, critical }; ///< which icon it has

    Kind kind = Kind::plain;
    QString title;
    QString message;
    QString defaultButton;
    QString alternateButton = {};
    QString otherButton = {};

    /// Waits for the person and answers the button; a closed window counts as the alternate button
    /// when there is one, else as the default one.
    Button run() const;

    /// Shows it on the window and returns; the window takes no input meanwhile.
    void showOn(QWidget& window) const;
};

/// Shows alerts. Tests put one that answers in the place of the usual, which opens message boxes.
class AlertPresenter {
  public:
    virtual ~AlertPresenter() = default;
    virtual Alert::Button run(const Alert& alert);
    virtual void showOn(const Alert& alert, QWidget& window);
};

/// Has `presenter`, not owned, show alerts; null: the usual one again. The main thread.
void replaceAlertPresenter(AlertPresenter* presenter);

} // namespace platform
