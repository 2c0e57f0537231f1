#pragma once

#include "framework/support/QNSupportLog.h"
#include "look/window/MVCustomWindow.h"

#include "platform/bundle/Bundle.h"

#include <QString>

#include <functional>

class SupportEntryList;
class QCheckBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

/// Collects a support report, shows all that is in it, and saves it or sends it to the maker's
/// server, if there is one. Nothing leaves the machine before the person has pressed "Send".
/// Closing the window cancels whatever it does. Main thread only.
class SupportWindow final : public MVCustomWindow {
    Q_OBJECT

  public:
    struct Dependencies {
        SupportSources sources = SupportSources::ofTheSystem();
        platform::Bundle bundle = platform::Bundle::main();
        QNSupportLog::StoreHandler storeHandler; ///< adds the application's own files
        /// Asks where to save a file of that name; empty for nowhere.
        std::function<QString(QWidget* parent, const QString& name)> chooseFile = &askForFile;
    };

    /// Begins to collect.
    explicit SupportWindow(Dependencies dependencies, QWidget* parent = nullptr);
    ~SupportWindow() override;

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

  private:
    enum class State { collecting, reviewing, working };

    static QString askForFile(QWidget* parent, const QString& name);

    QWidget* makeForm();
    QWidget* makeOptions();
    QWidget* makeProgress();
    void makeButtons();

    void collect();
    void hasCollected();
    void prepare();
    void save();
    void saveArchive(const QString& file, const QVariantMap& form);
    void send();
    void sendingStatus(const QString& text, QNSupportLog::Stage stage);
    void enter(State state, const QString& status = {});

    const Dependencies dependencies_;
    QNSupportLog report_;
    SupportEntryList* const entries_;
    QLineEdit* const email_;
    QPlainTextEdit* const comment_;
    QCheckBox* const fullProfile_;
    QCheckBox* const screenshots_;
    QLabel* const remark_;
    QLabel* const status_;
    QProgressBar* const progress_;
    QDialogButtonBox* const buttons_;
    QPushButton* save_ = nullptr;
    QPushButton* send_ = nullptr; // null without a server
};
