#pragma once

#include "framework/logviewer/LogDocument.h"
#include "framework/logviewer/LogFilter.h"
#include "framework/logviewer/LogSearch.h"
#include "framework/logviewer/LogTableSource.h"
#include "framework/logviewer/LogTableView.h"
#include "framework/logviewer/QNLogViewer.h"

#include <QKeySequence>

class LogInputBar;
class LogToolBar;
class QLabel;
class QWidget;

/// The log as a table, with a bar for filters, a search and a menu. Main thread only.
class QNLogTableViewer final : public QNLogViewer, public LogTableSource {
    Q_OBJECT

  public:
    [[nodiscard]] static std::unique_ptr<QNLogTableViewer>
    logViewerWithHandle(const qnlog_handle* handle);

    explicit QNLogTableViewer(const qnlog_handle* handle);
    ~QNLogTableViewer() override;

    /// A window that is not visible begins with an empty table.
    void showWindow() override;

    /// Forgets the file.
    void windowWillClose() override;

    /// The colour of a level's rows; none for most.
    [[nodiscard]] static std::optional<QColor> colorForLevel(std::uint32_t level);

    [[nodiscard]] LogTableView& table() const noexcept { return *table_; }
    [[nodiscard]] const QN::logviewer::LogDocument& document() const noexcept { return document_; }

    std::size_t numberOfRowsInTableView() const override { return filter_.rows().count(); }
    QNLogEntry entryOfRow(std::size_t row) const override;
    RowSize sizeOfRow(std::size_t row) const override;
    std::optional<QColor> backgroundColorForRow(std::size_t row) const override;
    void copyRows(std::size_t first, std::size_t last) override;

  protected:
    void logReadSucceeded(std::vector<QN::logviewer::LogDelivery> deliveries) override;
    void logReadFailed(const QString& reason) override;

  private:
    QWidget* makeContent();
    void makeActions();
    void addAction(const QString& title, const QList<QKeySequence>& keys,
                   void (QNLogTableViewer::*action)(), bool isKeyOfTable = false);
    void connectBars();
    void connectSearch();

    void openFile(const QString& path);
    void clear();
    void takeChange(const QN::logviewer::LogDocument::Change& change);
    void applyFilter();
    void takeFilteredRows();
    void rememberSight();
    void restoreSight();
    void updateNotice();
    void updateHint();
    QString hintOfFilter() const;
    void updateCount();

    std::size_t documentRow(std::size_t row) const;
    void showDocumentRow(std::size_t row);
    std::size_t currentDocumentRow() const;

    void find(QN::logviewer::LogSearch::Direction direction, bool includesFrom);
    void goToLevel(std::uint32_t least, std::uint32_t most, int direction);
    void goToTime();

    void openSearch();
    void openTime();
    void openFilter();
    void findNext();
    void findPrevious();
    void nextWarning();
    void previousWarning();
    void nextError();
    void previousError();
    void toggleWrapping();
    void copy();
    void saveCopy();
    void saveCopyAs(const QString& chosen);
    void openFolder();
    void closeWindow();

    QN::logviewer::LogDocument document_;
    QN::logviewer::LogFilter filter_{document_};
    QN::logviewer::LogSearch search_;
    std::optional<LogTableView::Sight> sight_; // in rows of the document, until it is restored
    QString path_;                             // of the shown file
    QString failure_;                          // why it cannot be read
    QString message_;                          // about the last action
    LogToolBar* toolBar_ = nullptr;
    LogTableView* table_ = nullptr;
    LogInputBar* searchBar_ = nullptr;
    LogInputBar* timeBar_ = nullptr;
    QLabel* notice_ = nullptr;
};
