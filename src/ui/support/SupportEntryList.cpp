#include "ui/support/SupportEntryList.h"

#include "framework/support/QNSupportLogStore.h"
#include "platform/text/ByteCount.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QTreeWidget>

#include <algorithm>

SupportEntryList::SupportEntryList(QWidget* parent)
    : QWidget(parent), list_(new QTreeWidget), text_(new QPlainTextEdit), picture_(new QLabel) {
    list_->setHeaderLabels({Texts::tr("Name"), Texts::tr("Size")});
    list_->setRootIsDecorated(false);
    list_->header()->setStretchLastSection(false);
    list_->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    list_->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    list_->setAccessibleName(Texts::tr("What will be sent"));
    text_->setReadOnly(true);
    text_->setTabChangesFocus(true);
    text_->setLineWrapMode(QPlainTextEdit::NoWrap);
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    text_->setAccessibleName(Texts::tr("Content of the selected entry"));
    picture_->setAlignment(Qt::AlignCenter);
    picture_->hide();
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins({});
    layout->addWidget(list_, 2);
    layout->addWidget(text_, 3);
    layout->addWidget(picture_, 3);
    connect(list_, &QTreeWidget::currentItemChanged, this, &SupportEntryList::showSelected);
}

QTreeWidgetItem* SupportEntryList::addItem(const QString& name, qsizetype size) {
    auto* const item = new QTreeWidgetItem(
        list_, {name, platform::binaryByteCount(static_cast<std::uint64_t>(size))});
    item->setTextAlignment(1, Qt::AlignRight);
    return item;
}

void SupportEntryList::showEntries(const std::vector<SupportEntry>& entries,
                                   const QString& recordName, std::function<QByteArray()> record,
                                   const QSet<QString>& leftOut) {
    clear();
    record_ = std::move(record);
    entries_ = &entries;
    addItem(recordName, record_().size());
    for (const SupportEntry& entry : entries)
        addItem(entry.name, entry.content.size())
            ->setCheckState(0, leftOut.contains(entry.name) ? Qt::Unchecked : Qt::Checked);
    list_->setCurrentItem(list_->topLevelItem(0));
}

void SupportEntryList::clear() {
    list_->clear();
    text_->clear();
    entries_ = nullptr;
    record_ = nullptr;
}

QSet<QString> SupportEntryList::leftOut() const {
    QSet<QString> names;
    for (int i = 1; i < list_->topLevelItemCount(); ++i) {
        if (list_->topLevelItem(i)->checkState(0) == Qt::Unchecked)
            names.insert(list_->topLevelItem(i)->text(0));
    }
    return names;
}

void SupportEntryList::showSelected() {
    const int row = list_->indexOfTopLevelItem(list_->currentItem());
    if (row < 0 || entries_ == nullptr)
        return;
    showContent(row == 0 ? record_() : (*entries_)[static_cast<std::size_t>(row - 1)].content);
}

/// A long text is cut: showing megabytes at once would take seconds.
void SupportEntryList::showContent(const QByteArray& content) {
    constexpr qsizetype longest = qsizetype{1} << 18U;
    QPixmap picture;
    const bool isPicture = content.startsWith("\x89PNG") && picture.loadFromData(content);
    if (isPicture)
        picture_->setPixmap(picture.scaled(text_->size().boundedTo(picture.size()),
                                           Qt::KeepAspectRatio, Qt::SmoothTransformation));
    picture_->setVisible(isPicture);
    text_->setVisible(!isPicture);
    QString text = QString::fromUtf8(content.left(longest));
    if (content.size() > longest)
        text += platform::formatted(
            Texts::tr("\n… and %@ more"),
            platform::binaryByteCount(static_cast<std::uint64_t>(content.size() - longest)));
    text_->setPlainText(text);
}
