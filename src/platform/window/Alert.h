#pragma once

#include <QString>

class QWidget;

namespace platform {

/// A question or message to the user: title, explanation, and one to three buttons; an empty text
/// means no button.
struct Alert {
    enum Button { other = -1, alternate = 0, standard = 1 };
    enum class Kind { plain, warning, critical }; ///< which icon it has

    Kind kind = Kind::plain;
    QString title;
    QString message;
    QString defaultButton;
    QString alternateButton = {};
    QString otherButton = {};

    /// Waits for the user and returns the button; closing the window counts as the alternate button
    /// if there is one, else as the default one.
    Button run() const;

    /// Shows it on the window and returns; the window takes no input meanwhile.
    void showOn(QWidget& window) const;
};

/// Shows alerts as message boxes. Tests replace it with one that answers by itself.
class AlertPresenter {
  public:
    virtual ~AlertPresenter() = default;
    virtual Alert::Button run(const Alert& alert);
    virtual void showOn(const Alert& alert, QWidget& window);
};

/// Installs `presenter`, which is not owned; null: the default one again. Main thread only.
void replaceAlertPresenter(AlertPresenter* presenter);

} // namespace platform
