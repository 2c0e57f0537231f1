#include "framework/logviewer/QNLogViewer.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/log/qnlog_handle.h"
#include "look/window/MVCustomWindow.h"
#include "platform/base/ExceptionReport.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/text/Texts.h"
#include "platform/window/WindowFront.h"

#include <QEvent>
#include <QPointer>

#include <cerrno>
#include <system_error>

using QN::logviewer::LogDelivery;
using QN::logviewer::LogReader;

QNLogViewer::QNLogViewer(const qnlog_handle* handle) : handle_(handle) {}

QNLogViewer::~QNLogViewer() {
    if (window_)
        window_->removeEventFilter(this);
}

void QNLogViewer::setWindow(std::unique_ptr<MVCustomWindow> window) {
    window_ = std::move(window);
    window_->installEventFilter(this);
}

QString QNLogViewer::handlePath() const {
    return handle_ != nullptr ? QString::fromStdString(handle_->path()) : QString();
}

void QNLogViewer::readFile(const QString& path) {
    reader_.reset();
    if (path.isEmpty()) {
        logReadFailed(Texts::tr("There is no log file."));
        return;
    }
    reader_ = LogReader::start(path.toStdString(), [this](std::vector<LogDelivery> deliveries) {
        logReadSucceeded(std::move(deliveries));
    });
    if (!reader_)
        logReadFailed(QString::fromStdString(std::generic_category().message(errno)));
}

void QNLogViewer::showWindow() {
    if (!window_->isVisible())
        readFile(handlePath());
    platform::DispatchQueue::main()->async([viewer = QPointer(this)] {
        platform::guarded(kExceptionInLogViewer, [&] {
            if (!viewer)
                return;
            platform::bringToFront(*viewer->window_);
        });
    });
}

void QNLogViewer::windowWillClose() {
    reader_.reset();
}

bool QNLogViewer::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_.get() && event->type() == QEvent::Close)
        windowWillClose();
    return QObject::eventFilter(watched, event);
}
