#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

/// The window of the crash reporter, which decides what its controls do. It stays above others. No
/// button is pressed by the Enter key. Main thread only.
class CrashReporterWindow final : public QDialog {
    Q_OBJECT

  public:
    /// `sendText` is the text of the button that sends or saves.
    explicit CrashReporterWindow(const QString& sendText, QWidget* parent = nullptr);

    [[nodiscard]] QLabel& messageTextField() const noexcept { return *messageTextField_; }
    [[nodiscard]] QLineEdit& emailField() const noexcept { return *emailField_; }
    [[nodiscard]] QPlainTextEdit& commentsField() const noexcept { return *commentsField_; }
    [[nodiscard]] QLabel& statusField() const noexcept { return *statusField_; }
    [[nodiscard]] QProgressBar& progressBar() const noexcept { return *progressBar_; }
    [[nodiscard]] QPushButton& sendButton() const noexcept { return *sendButton_; }
    [[nodiscard]] QPushButton& cancelButton() const noexcept { return *cancelButton_; }
    [[nodiscard]] QPushButton& contentButton() const noexcept { return *contentButton_; }
    [[nodiscard]] QCheckBox& dontAskAgain() const noexcept { return *dontAskAgain_; }

    /// What has crashed when, a line each; of many, the first few.
    void setCrashes(const QStringList& crashes);

    /// In the middle of the screen.
    void showCentred();

    /// The user closes the window, by whatever means but the buttons.
    void reject() override { Q_EMIT closeWanted(); }

  Q_SIGNALS:
    void closeWanted();

  private:
    QWidget* makeForm();
    QWidget* makeButtons();

    QLabel* const messageTextField_;
    QLabel* const crashes_;
    QLineEdit* const emailField_;
    QPlainTextEdit* const commentsField_;
    QLabel* const statusField_;
    QProgressBar* const progressBar_;
    QPushButton* const sendButton_;
    QPushButton* const cancelButton_;
    QPushButton* const contentButton_;
    QCheckBox* const dontAskAgain_;
};
