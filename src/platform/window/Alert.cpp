#include "platform/window/Alert.h"

#include <QMessageBox>
#include <QPushButton>

#include <memory>

namespace platform {

namespace {

AlertPresenter* replacement = nullptr;

AlertPresenter& presenter() {
    static AlertPresenter usual;
    return replacement ? *replacement : usual;
}

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

Box makeBox(const Alert& alert, QWidget* parent) {
    Box box;
    box.window = std::make_unique<QMessageBox>(iconOf(alert.kind), alert.title, alert.title,
                                               QMessageBox::NoButton, parent);
    box.window->setTextFormat(Qt::PlainText);
    box.window->setInformativeText(alert.message);
    QPushButton* const standard =
        box.window->addButton(alert.defaultButton, QMessageBox::AcceptRole);
    box.window->setDefaultButton(standard);
    box.window->setEscapeButton(standard);
    if (!alert.alternateButton.isEmpty()) {
        box.alternate = box.window->addButton(alert.alternateButton, QMessageBox::RejectRole);
        box.window->setEscapeButton(box.alternate);
    }
    if (!alert.otherButton.isEmpty())
        box.other = box.window->addButton(alert.otherButton, QMessageBox::ActionRole);
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
    return clicked && clicked == box.other ? Alert::other : Alert::standard;
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
