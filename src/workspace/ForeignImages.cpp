#include "workspace/ForeignImages.h"

#include <QString>
#include <QtGlobal>

#include <atomic>

namespace {

thread_local int depth = 0;
std::atomic<QtMessageHandler> usualHandler{nullptr};
ForeignImages::Reporter reporter = nullptr;

void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (depth == 0 || type == QtFatalMsg)
        usualHandler.load()(type, context, message);
    else if (reporter != nullptr)
        reporter(message);
}

} // namespace

void ForeignImages::setReporter(Reporter newReporter) noexcept {
    reporter = newReporter;
}

/// The usual handler is known before another thread can come to ours.
ForeignImages::ForeignImages() {
    if (depth++ > 0)
        return;
    usualHandler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(usualHandler);
    qInstallMessageHandler(&handle);
}

ForeignImages::~ForeignImages() {
    if (--depth == 0)
        qInstallMessageHandler(usualHandler);
}
