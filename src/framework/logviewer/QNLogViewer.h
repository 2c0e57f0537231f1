#pragma once

#include "framework/logviewer/LogReader.h"

#include <QObject>
#include <QString>

#include <memory>
#include <vector>

class MVCustomWindow;
class qnlog_handle;

/// The controller of a window that shows a log file. It reads the file while the window is open.
/// What the window shows is the subclass's. Main thread only, served by the main queue.
class QNLogViewer : public QObject {
    Q_OBJECT

  public:
    /// `handle` must outlive the viewer; null: there is no log.
    explicit QNLogViewer(const qnlog_handle* handle);
    ~QNLogViewer() override;

    /// Starts to read if the window is not visible, and shows it a little later.
    virtual void showWindow();

    /// Stops reading. Called when the window closes.
    virtual void windowWillClose();

    [[nodiscard]] MVCustomWindow* window() const noexcept { return window_.get(); }

  protected:
    /// What the reader has found, and what it could not read.
    virtual void logReadSucceeded(std::vector<QN::logviewer::LogDelivery> deliveries) = 0;
    virtual void logReadFailed(const QString& reason) = 0;

    /// Takes the window over. Call it once, from the constructor.
    void setWindow(std::unique_ptr<MVCustomWindow> window);

    /// Reads this file instead of the one that has been read.
    void readFile(const QString& path);

    /// The log's own file; empty without a log.
    [[nodiscard]] QString handlePath() const;

    [[nodiscard]] const QN::logviewer::LogReader* reader() const noexcept { return reader_.get(); }

    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    const qnlog_handle* const handle_;
    std::unique_ptr<MVCustomWindow> window_;
    std::unique_ptr<QN::logviewer::LogReader> reader_; // while the window is open
};
