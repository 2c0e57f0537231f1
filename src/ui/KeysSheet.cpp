#include "ui/KeysSheet.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "look/window/BarButton.h"
#include "look/window/SheetPlace.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowFront.h"

#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int margin = 20;
constexpr int gap = 16;
constexpr int rowGap = 6;

QLabel* makeLabel(const QString& text, bool isBold) {
    auto* const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    QFont font = label->font();
    font.setBold(isBold);
    label->setFont(font);
    return label;
}

} // namespace

KeysSheet::KeysSheet(QWidget& window, const QList<VolumeMenu::Key>& menuKeys)
    : MVCustomWindow(new QWidget, closable, &window) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setWindowModality(Qt::WindowModal);
    setWindowTitle(Texts::tr("Keys"));
    contentView().setAutoFillBackground(true);
    auto* const columns = new QHBoxLayout;
    columns->setSpacing(2 * gap);
    columns->addWidget(makeColumn(Texts::tr("Programs"), itemKeys()), 0, Qt::AlignTop);
    columns->addWidget(makeColumn(Texts::tr("Menu"), menuKeys), 0, Qt::AlignTop);
    auto* const done = new BarButton;
    done->setText(Texts::tr("Done"));
    connect(done, &QPushButton::clicked, this, &QWidget::close);
    auto* const rows = new QVBoxLayout(&contentView());
    rows->setContentsMargins(margin, gap, margin, margin);
    rows->setSpacing(gap);
    rows->addLayout(columns);
    rows->addWidget(done, 0, Qt::AlignRight);
    const auto color = [this] { setPalette(themePalette()); };
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, color);
    color();
    done->setFocus();
}

QList<VolumeMenu::Key> KeysSheet::itemKeys() {
    return {{Texts::tr("Up, Down"), Texts::tr("Previous, next program")},
            {Texts::tr("Tab"), Texts::tr("Next control")},
            {Texts::tr("Left, Right"), Texts::tr("Volume by 1 percent")},
            {Texts::tr("Page Up, Page Down"), Texts::tr("Volume by 10 percent")},
            {Texts::tr("Home, End"), Texts::tr("Silent, full volume")},
            {Texts::tr("F2"), Texts::tr("Type the volume")},
            {Texts::tr("Ctrl+0"), Texts::tr("Reset to 100 %")},
            {Texts::tr("Space"), Texts::tr("Mute or unmute")},
            {Texts::tr("Del"), Texts::tr("Ignore the program")},
            {Texts::tr("Letters"), Texts::tr("Find a program by its name")},
            {Texts::tr("Shift+F10"), Texts::tr("Menu of the program")}};
}

QWidget* KeysSheet::makeColumn(const QString& title, const QList<VolumeMenu::Key>& keys) {
    auto* const part = new QWidget;
    auto* const grid = new QGridLayout(part);
    grid->setContentsMargins({});
    grid->setHorizontalSpacing(gap);
    grid->setVerticalSpacing(rowGap);
    grid->addWidget(makeLabel(title, true), 0, 0, 1, 2);
    for (const VolumeMenu::Key& key : keys) {
        const int row = grid->rowCount();
        QLabel* const keyLabel = makeLabel(key.keys, false);
        keyLabel->setForegroundRole(QPalette::Link);
        grid->addWidget(keyLabel, row, 0);
        grid->addWidget(makeLabel(key.meaning, false), row, 1);
    }
    return part;
}

void KeysSheet::open() {
    setFixedSize(sizeForContent(contentView().sizeHint()));
    placeOnWindow(*this);
    platform::bringToFront(*this);
}

void KeysSheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape)
        close();
    else
        MVCustomWindow::keyPressEvent(event);
}
