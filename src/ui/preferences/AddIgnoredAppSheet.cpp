#include "ui/preferences/AddIgnoredAppSheet.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "look/window/SheetPlace.h"
#include "platform/text/Texts.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QStringListModel>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace {

constexpr int margin = 16;
constexpr int leastWidth = 360;

} // namespace

AddIgnoredAppSheet::AddIgnoredAppSheet(QWidget& window, Warning warning)
    : MVCustomWindow(new QWidget, closable, &window)
    , warning_(std::move(warning))
    , addTextField_(new QLineEdit)
    , note_(new QLabel)
    , cancelButton_(new BarButton)
    , addButton_(new BarButton) {
    setWindowTitle(Texts::tr("Ignore a Program"));
    setWindowModality(Qt::WindowModal);
    contentView().setAutoFillBackground(true);
    auto* const label = new QLabel(Texts::tr("&Name of the program:"));
    label->setBuddy(addTextField_);
    note_->setObjectName(QStringLiteral("note"));
    note_->setTextFormat(Qt::PlainText);
    note_->setWordWrap(true);
    cancelButton_->setText(Texts::tr("&Cancel"));
    addButton_->setText(Texts::tr("&Add"));
    auto* const rows = new QVBoxLayout(&contentView());
    rows->setContentsMargins(margin, margin, margin, margin);
    rows->addWidget(label);
    rows->addWidget(addTextField_);
    rows->addWidget(note_, 1);
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancelButton_);
    buttons->addWidget(addButton_);
    rows->addLayout(buttons);
    connect(addTextField_, &QLineEdit::textChanged, this,
            &AddIgnoredAppSheet::controlTextDidChange);
    connect(addButton_, &QPushButton::clicked, this, [this] { Q_EMIT action(confirm); });
    connect(cancelButton_, &QPushButton::clicked, this, [this] { Q_EMIT action(cancel); });
    const auto color = [this] { setPalette(themePalette()); };
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, color);
    color();
}

/// Two lines for a note, so that the window keeps its size while somebody types.
void AddIgnoredAppSheet::fit() {
    note_->setMinimumHeight(2 * note_->fontMetrics().lineSpacing());
    const QSize content = contentView().layout()->minimumSize().expandedTo({leastWidth, 0});
    setFixedSize(sizeForContent(content));
    placeOnWindow(*this);
}

void AddIgnoredAppSheet::begin(const QStringList& names) {
    auto* const completer = new QCompleter(names, this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setFilterMode(Qt::MatchContains);
    completer->popup()->setPalette(palette());
    delete addTextField_->completer();
    addTextField_->setCompleter(completer);
    addTextField_->clear();
    controlTextDidChange();
    tag_ = cancel;
    fit();
    show();
    raise();
    activateWindow();
    addTextField_->setFocus();
}

void AddIgnoredAppSheet::end(int tag) {
    tag_ = tag;
    close();
}

void AddIgnoredAppSheet::controlTextDidChange() {
    addButton_->setEnabled(!addTextField_->text().trimmed().isEmpty());
    review();
}

void AddIgnoredAppSheet::review() {
    const QString text = addButton_->isEnabled() ? warning_(addTextField_->text()) : QString();
    if (text == note_->text())
        return;
    note_->setText(text);
    if (text.isEmpty() || !QAccessible::isActive())
        return;
    QAccessibleEvent event(note_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

void AddIgnoredAppSheet::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        Q_EMIT action(cancel);
    else if (isReturn && addButton_->isEnabled())
        Q_EMIT action(confirm);
    else
        MVCustomWindow::keyPressEvent(event);
}

/// The title bar's button, or the window system.
void AddIgnoredAppSheet::closeEvent(QCloseEvent* event) {
    MVCustomWindow::closeEvent(event);
    Q_EMIT ended(std::exchange(tag_, cancel));
}
