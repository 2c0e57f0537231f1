#include "framework/logviewer/LogToolBar.h"

#include "framework/log/qnlog.h"
#include "look/window/MenuLook.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QComboBox>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QToolButton>

#include <cstdlib>
#include <memory>

using QN::logviewer::LogVisibleRows;

namespace {

struct Free {
    void operator()(void* memory) const noexcept { std::free(memory); }
};

/// The backups that exist, the newest first.
QStringList backupsOf(const QString& path) {
    std::size_t count = 0;
    const std::unique_ptr<char*, Free> paths(
        qnlog_rotated_files(path.toUtf8().constData(), &count));
    QStringList backups;
    for (std::size_t i = 0; i < count; ++i) {
        const std::unique_ptr<char, Free> backup(paths.get()[i]);
        if (backup)
            backups += QString::fromUtf8(backup.get());
    }
    return backups;
}

/// Up to the level.
constexpr LogVisibleRows::Levels upTo(std::uint32_t level) {
    return (2U << level) - 1;
}

} // namespace

LogToolBar::LogToolBar(QWidget* parent)
    : QWidget(parent)
    , files_(new QComboBox)
    , levels_(new QComboBox)
    , text_(new QLineEdit)
    , more_(new QToolButton)
    , menu_(new QMenu(this)) {
    setAutoFillBackground(true);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(6, 4, 6, 4);
    files_->setAccessibleName(Texts::tr("Log file"));
    layout->addWidget(files_);
    makeLevels();
    layout->addWidget(levels_);
    text_->setPlaceholderText(Texts::tr("Only rows with this text"));
    text_->setAccessibleName(Texts::tr("Only rows with this text"));
    text_->installEventFilter(this);
    layout->addWidget(text_, 1);
    more_->setText(Texts::tr("More"));
    more_->setPopupMode(QToolButton::InstantPopup);
    more_->setToolButtonStyle(Qt::ToolButtonTextOnly);
    more_->setFocusPolicy(Qt::TabFocus);
    followTheme(*menu_);
    more_->setMenu(menu_);
    layout->addWidget(more_);
    connect(files_, &QComboBox::currentIndexChanged, this, &LogToolBar::fileChosen);
    connect(levels_, &QComboBox::currentIndexChanged, this, &LogToolBar::filterChanged);
    connect(text_, &QLineEdit::textChanged, this, &LogToolBar::filterChanged);
    // Not before it is seen: for its icon, Qt reads the desktop's whole icon theme.
    connect(text_, &QLineEdit::textChanged, text_, [this] { text_->setClearButtonEnabled(true); });
}

void LogToolBar::makeLevels() {
    levels_->setAccessibleName(Texts::tr("Levels"));
    levels_->addItem(Texts::tr("All levels"), LogVisibleRows::allLevels);
    levels_->addItem(Texts::tr("Without debug messages"), upTo(qnlog_user));
    levels_->addItem(Texts::tr("User actions"), 1U << qnlog_user);
    levels_->addItem(Texts::tr("Warnings and errors"), upTo(qnlog_warning));
    levels_->addItem(Texts::tr("Errors"), upTo(qnlog_error));
}

void LogToolBar::setLog(const QString& path) {
    const QSignalBlocker silent(files_);
    files_->clear();
    if (path.isEmpty())
        return;
    files_->addItem(Texts::tr("This run"), path);
    for (const QString& backup : backupsOf(path)) {
        const QString end =
            QLocale().toString(QFileInfo(backup).lastModified(), QLocale::ShortFormat);
        files_->addItem(platform::formatted(Texts::tr("Run until %@"), end), backup);
        files_->setItemData(files_->count() - 1, backup, Qt::ToolTipRole);
    }
}

QString LogToolBar::file() const {
    return files_->currentData().toString();
}

LogVisibleRows::Levels LogToolBar::levels() const {
    return levels_->currentData().toUInt();
}

QString LogToolBar::filterText() const {
    return text_->text();
}

void LogToolBar::openFilter() {
    text_->setFocus();
    text_->selectAll();
}

bool LogToolBar::eventFilter(QObject* watched, QEvent* event) {
    if (watched != text_ || event->type() != QEvent::KeyPress)
        return QWidget::eventFilter(watched, event);
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Escape)
        text_->clear();
    if (key == Qt::Key_Escape || key == Qt::Key_Return || key == Qt::Key_Enter) {
        Q_EMIT filterLeft();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}
