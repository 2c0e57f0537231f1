#include "look/window/AlertWindow.h"

#include "look/theme/CurrentTheme.h"
#include "look/theme/ThemePalette.h"
#include "look/window/BarButton.h"
#include "look/window/SheetPlace.h"
#include "look/window/Sign.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowPositioning.h"

#include <QAccessible>
#include <QApplication>
#include <QEventLoop>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>
#include <chrono>

using platform::Alert;

namespace {

constexpr int contentWidth = 460;
constexpr int margin = 20;
constexpr int gap = 16;
constexpr int highestDetails = 160;
constexpr double titleSize = 1.15;
constexpr double signScale = 1.75;

Sign signOf(Alert::Kind kind) {
    switch (kind) {
    case Alert::Kind::plain:
        break;
    case Alert::Kind::warning:
        return Sign::warning;
    case Alert::Kind::critical:
        return Sign::critical;
    }
    return Sign::information;
}

class SignView final : public QWidget {
  public:
    explicit SignView(Sign sign) : sign_(sign) {
        constexpr int size = static_cast<int>(signSize * signScale);
        setFixedSize(size, size);
    }

  protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        painter.scale(signScale, signScale);
        drawSign(painter, sign_, palette().color(QPalette::Window));
    }

  private:
    const Sign sign_;
};

/// Plain: a text from elsewhere is no markup.
QLabel* makeLabel(const QString& text) {
    auto* const label = new QLabel(text);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeading);
    return label;
}

/// An ampersand in it is no mnemonic.
QString labelOf(QString button) {
    return button.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

class Presenter final : public platform::AlertPresenter {
  public:
    /// Somebody may destroy the parent meanwhile, and the alert with it.
    Alert::Button run(const Alert& alert) override {
        const QPointer<AlertWindow> window(new AlertWindow(alert, QApplication::activeWindow()));
        Alert::Button answer = window->answer();
        window->setWindowModality(Qt::ApplicationModal);
        QEventLoop untilEnded;
        QObject::connect(window, &AlertWindow::ended, &untilEnded, &QEventLoop::quit);
        QObject::connect(window, &QObject::destroyed, &untilEnded, &QEventLoop::quit);
        window->open();
        untilEnded.exec();
        if (window != nullptr) {
            answer = window->answer();
            delete window;
        }
        return answer;
    }

    void showOn(const Alert& alert, QWidget& parent) override {
        auto* const sheet = new AlertWindow(alert, &parent); // which owns it
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->setWindowModality(Qt::WindowModal);
        sheet->open();
    }
};

} // namespace

void AlertWindow::install() {
    static Presenter presenter;
    platform::replaceAlertPresenter(&presenter);
}

AlertWindow::AlertWindow(const Alert& alert, QWidget* parent)
    : MVCustomWindow(new QWidget, namedByProgram, parent)
    , isGuarded_(alert.isGuarded)
    , answer_(alert.isGuarded || !alert.alternateButton.isEmpty() ? Alert::alternate
                                                                  : Alert::standard) {
    setWindowFlags(Qt::Dialog | Qt::FramelessWindowHint);
    setWindowTitle(alert.title);
    setAccessibleDescription(alert.message);
    contentView().setAutoFillBackground(true);
    auto* const rows = new QVBoxLayout(&contentView());
    rows->setContentsMargins(margin, margin - gap / 2, margin, margin);
    rows->setSpacing(gap);
    rows->addWidget(makeText(alert), 1);
    if (!alert.details.isEmpty()) {
        details_ = new QPlainTextEdit(alert.details);
        details_->setReadOnly(true);
        const int lines = details_->document()->blockCount() + 1;
        details_->setFixedHeight(
            std::min(highestDetails, lines * details_->fontMetrics().lineSpacing() + margin));
        details_->hide();
        rows->addWidget(details_);
    }
    rows->addWidget(makeButtons(alert));
    const auto color = [this] { setPalette(themePalette()); };
    connect(&CurrentTheme::shared(), &CurrentTheme::changed, this, color);
    color();
}

QWidget* AlertWindow::makeText(const Alert& alert) {
    auto* const part = new QWidget;
    auto* const columns = new QHBoxLayout(part);
    columns->setContentsMargins({});
    columns->setSpacing(gap);
    columns->addWidget(new SignView(signOf(alert.kind)), 0, Qt::AlignTop);
    auto* const texts = new QVBoxLayout;
    texts->setSpacing(gap / 2);
    QLabel* const title = makeLabel(alert.title);
    QFont font = title->font();
    font.setBold(true);
    font.setPointSizeF(font.pointSizeF() * titleSize);
    title->setFont(font);
    texts->addWidget(title);
    if (!alert.message.isEmpty())
        texts->addWidget(makeLabel(alert.message));
    texts->addStretch();
    columns->addLayout(texts, 1);
    return part;
}

QWidget* AlertWindow::makeButtons(const Alert& alert) {
    auto* const part = new QWidget;
    auto* const line = new QHBoxLayout(part);
    line->setContentsMargins({});
    if (details_ != nullptr) {
        detailsButton_ = new BarButton;
        detailsButton_->setText(Texts::tr("Show Details"));
        connect(detailsButton_, &QPushButton::clicked, this, &AlertWindow::toggleDetails);
        line->addWidget(detailsButton_);
    }
    line->addStretch();
    addButton(alert.otherButton, Alert::other);
    addButton(alert.alternateButton, Alert::alternate);
    addButton(alert.defaultButton, Alert::standard);
    for (BarButton* const button : std::as_const(buttons_))
        line->addWidget(button);
    return part;
}

void AlertWindow::addButton(const QString& text, Alert::Button button) {
    if (text.isEmpty())
        return;
    auto* const made = new BarButton;
    made->setText(labelOf(text));
    made->installEventFilter(this);
    connect(made, &QPushButton::clicked, this, [this, button] {
        answer_ = button;
        close();
    });
    buttons_.append(made);
}

void AlertWindow::toggleDetails() {
    details_->setVisible(details_->isHidden());
    detailsButton_->setText(details_->isHidden() ? Texts::tr("Show Details")
                                                 : Texts::tr("Hide Details"));
    fit();
}

void AlertWindow::fit() {
    QLayout& layout = *contentView().layout();
    layout.invalidate();
    const int width = std::max(contentWidth, layout.minimumSize().width());
    setFixedSize(sizeForContent({width, layout.totalHeightForWidth(width)}));
}

void AlertWindow::open() {
    fit();
    if (parentWidget() != nullptr)
        placeOnWindow(*this);
    else
        platform::moveToCenter(*this, *screen());
    show();
    raise();
    activateWindow();
    if (!buttons_.isEmpty())
        buttons_.last()->setFocus();
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent event(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

/// Keys of somebody who has not seen the window yet.
bool AlertWindow::isTooEarly() const {
    constexpr std::chrono::seconds without{1};
    return isGuarded_ && platform::MonotonicClock::now() - made_ < without;
}

void AlertWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !isTooEarly())
        close();
    else
        MVCustomWindow::keyPressEvent(event);
}

/// The buttons'.
bool AlertWindow::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::ShortcutOverride:
        return isTooEarly();
    default:
        return MVCustomWindow::eventFilter(watched, event);
    }
}

void AlertWindow::closeEvent(QCloseEvent* event) {
    MVCustomWindow::closeEvent(event);
    Q_EMIT ended();
}
