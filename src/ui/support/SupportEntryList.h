#pragma once

#include <QSet>
#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

struct SupportEntry;
class QLabel;
class QPlainTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

/// The entries of a support report with their sizes. The selected one can be read beside the list,
/// and each but the first can be unchecked. Main thread only.
class SupportEntryList final : public QWidget {
    Q_OBJECT

  public:
    explicit SupportEntryList(QWidget* parent = nullptr);

    /// Shows these entries, all checked but those of `leftOut`. The first one is `record`, whose
    /// content changes until it is sent. The entries must outlive their being shown.
    void showEntries(const std::vector<SupportEntry>& entries, const QString& recordName,
                     std::function<QByteArray()> record, const QSet<QString>& leftOut);
    void clear();

    /// The names of the unchecked entries.
    [[nodiscard]] QSet<QString> leftOut() const;

  private:
    QTreeWidgetItem* addItem(const QString& name, qsizetype size);
    void showSelected();
    void showContent(const QByteArray& content);

    QTreeWidget* const list_;
    QPlainTextEdit* const text_;
    QLabel* const picture_;
    const std::vector<SupportEntry>* entries_ = nullptr;
    std::function<QByteArray()> record_;
};
