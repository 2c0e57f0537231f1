#include "workspace/ImageWarningFilter.h"

#include <QString>
#include <QtGlobal>

#include <atomic>

namespace {

thread_local int depth = 0;
std::atomic<QtMessageHandler> usualHandler{nullptr};
ImageWarningFilter::Reporter reporter = nullptr;

void handle(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    if (depth == 0 || type == QtFatalMsg)
        usualHandler.load()(type, context, message);
    else if (reporter != nullptr)
        reporter(message);
}

} // namespace

void ImageWarningFilter::setReporter(Reporter newReporter) noexcept {
    reporter = newReporter;
}

/// The former handler is stored before another thread can call ours.
ImageWarningFilter::ImageWarningFilter() {
    if (depth++ > 0)
        return;
    usualHandler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(usualHandler);
    qInstallMessageHandler(&handle);
}

ImageWarningFilter::~ImageWarningFilter() {
    if (--depth == 0)
        qInstallMessageHandler(usualHandler);
}
