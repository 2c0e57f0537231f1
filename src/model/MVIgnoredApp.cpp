#include "model/MVIgnoredApp.h"

#include <utility>

MVIgnoredApp::MVIgnoredApp(QString name, bool enabled)
    : name_(std::move(name)), enabled_(enabled) {}

void MVIgnoredApp::setEnabled(bool enabled) {
    if (enabled == enabled_)
        return;
    enabled_ = enabled;
    Q_EMIT enabledChanged(enabled);
}
