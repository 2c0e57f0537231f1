#include "platform/window/Alert.h"

#include "platform/base/MonotonicClock.h"

#include <QKeyEvent>
#include <QMessageBox>
#include <QPushButton>

#include <chrono>
#include <memory>

namespace platform {

namespace {

AlertPresenter* replacement = nullptr;

AlertPresenter& presenter() {
    static AlertPresenter usual;
    return replacement ? *replacement : usual;
}

/// Swallows the keys of somebody who has not seen the window yet, and closes a box without pressing
/// its only button.
class Guard final : public QObject {
  public:
    explicit Guard(QMessageBox& box) : QObject(&box), box_(box) {
        box.installEventFilter(this);
        for (QWidget* const each : box.findChildren<QWidget*>())
            each->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override {
        switch (event->type()) {
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
        case QEvent::ShortcutOverride:
            return takesKey(*event);
        case QEvent::Close:
            if (watched == &box_)
                box_.done(QDialog::Rejected);
            return watched == &box_;
        default:
            return false;
        }
    }

  private:
    bool takesKey(const QEvent& event) {
        constexpr std::chrono::seconds without{1};
        if (platform::MonotonicClock::now() - made_ < without)
            return true;
        const bool isEscape = event.type() == QEvent::KeyPress &&
                              static_cast<const QKeyEvent&>(event).key() == Qt::Key_Escape;
        if (isEscape)
            box_.done(QDialog::Rejected);
        return isEscape;
    }

    QMessageBox& box_;
    const platform::MonotonicClock::time_point made_ = platform::MonotonicClock::now();
};

struct Box {
    std::unique_ptr<QMessageBox> window;
    QAbstractButton* alternate = nullptr;
    QAbstractButton* other = nullptr;
};

QMessageBox::Icon iconOf(Alert::Kind kind) {
    switch (kind) {
    case Alert::Kind::plain:
        break;
    case Alert::Kind::warning:
        return QMessageBox::Warning;
    case Alert::Kind::critical:
        return QMessageBox::Critical;
    }
    return QMessageBox::Information;
}

/// An ampersand in it is no mnemonic.
QString labelOf(QString button) {
    return button.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

Box makeBox(const Alert& alert, QWidget* parent) {
    Box box;
    box.window = std::make_unique<QMessageBox>(iconOf(alert.kind), alert.title, alert.title,
                                               QMessageBox::NoButton, parent);
    box.window->setTextFormat(Qt::PlainText);
    box.window->setInformativeText(alert.message);
    QPushButton* const standard =
        box.window->addButton(labelOf(alert.defaultButton), QMessageBox::AcceptRole);
    box.window->setDefaultButton(standard);
    box.window->setEscapeButton(standard);
    box.window->setDetailedText(alert.details);
    if (!alert.alternateButton.isEmpty()) {
        box.alternate =
            box.window->addButton(labelOf(alert.alternateButton), QMessageBox::RejectRole);
        box.window->setEscapeButton(box.alternate);
    }
    if (!alert.otherButton.isEmpty())
        box.other = box.window->addButton(labelOf(alert.otherButton), QMessageBox::ActionRole);
    if (alert.isGuarded)
        new Guard(*box.window); // which owns it
    return box;
}

} // namespace

Alert::Button Alert::run() const {
    return presenter().run(*this);
}

void Alert::showOn(QWidget& window) const {
    presenter().showOn(*this, window);
}

Alert::Button AlertPresenter::run(const Alert& alert) {
    const Box box = makeBox(alert, nullptr);
    box.window->exec();
    const QAbstractButton* const clicked = box.window->clickedButton();
    if (clicked && clicked == box.alternate)
        return Alert::alternate;
    if (clicked && clicked == box.other)
        return Alert::other;
    return clicked == nullptr && alert.isGuarded ? Alert::alternate : Alert::standard;
}

void AlertPresenter::showOn(const Alert& alert, QWidget& window) {
    QMessageBox* const box = makeBox(alert, &window).window.release(); // the window owns it
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setWindowModality(Qt::WindowModal);
    box->show();
}

void replaceAlertPresenter(AlertPresenter* newPresenter) {
    replacement = newPresenter;
}

} // namespace platform
