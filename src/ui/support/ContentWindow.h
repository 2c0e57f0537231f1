#pragma once

#include <QDialog>

class QLabel;
class QNSupportLog;
class SupportEntryList;

/// Shows all that a report will have in it, and lets the user leave parts of it out. It collects
/// them on the first time, which takes some seconds. Main thread only.
class ContentWindow final : public QDialog {
    Q_OBJECT

  public:
    /// Begins. `report` must outlive the window, and be in use by nobody else meanwhile.
    ContentWindow(QNSupportLog& report, QWidget* parent);
    ~ContentWindow() override;

    /// Whatever way the window is closed, what has been chosen is what will be sent.
    void done(int result) override;

  private:
    void showEntries();

    QNSupportLog& report_;
    SupportEntryList* const entries_;
    QLabel* const status_;
    bool isCollecting_ = false;
};
