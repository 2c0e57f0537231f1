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
    QString details = {}; ///< shown on request; plain text

    /// Closing the window never counts as the default button, and for its first second it takes no
    /// key: for an alert that appears while the user types, and whose button cannot be undone.
    bool isGuarded = false;

    /// Waits for the user and returns the button; closing the window counts as the alternate button
    /// if there is one or the alert is guarded, else as the default one.
    Button run() const;

    /// Shows it on the window and returns; the window takes no input meanwhile.
    void showOn(QWidget& window) const;
};

/// Shows alerts. Tests answer them by one of their own.
class AlertPresenter {
  public:
    virtual ~AlertPresenter() = default;
    virtual Alert::Button run(const Alert& alert) = 0;
    virtual void showOn(const Alert& alert, QWidget& /*window*/) { run(alert); }
};

/// Installs `presenter`, which is not owned. Without one, null, an alert is a line in the system
/// log and counts as closed. Main thread only.
void replaceAlertPresenter(AlertPresenter* presenter);

} // namespace platform
