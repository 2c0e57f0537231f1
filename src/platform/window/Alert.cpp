#include "platform/window/Alert.h"

#include "platform/base/SystemLog.h"

namespace platform {

namespace {

AlertPresenter* presenter = nullptr;

void log(const Alert& alert) {
    systemLog(LogPriority::warning, "%s %s", qUtf8Printable(alert.title),
              qUtf8Printable(alert.message));
}

} // namespace

Alert::Button Alert::run() const {
    if (presenter != nullptr)
        return presenter->run(*this);
    log(*this);
    return isGuarded || !alternateButton.isEmpty() ? alternate : standard;
}

void Alert::showOn(QWidget& window) const {
    if (presenter != nullptr)
        presenter->showOn(*this, window);
    else
        log(*this);
}

void replaceAlertPresenter(AlertPresenter* newPresenter) {
    presenter = newPresenter;
}

} // namespace platform
