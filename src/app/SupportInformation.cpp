#include "app/SupportInformation.h"

#include "framework/support/QNSupportLogStore.h"
#include "platform/bundle/Bundle.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/window/WindowFront.h"
#include "platform/window/WindowPositioning.h"
#include "ui/support/SupportWindow.h"

#include <QDir>
#include <QFileInfo>

namespace {

void addLogs(QNSupportLogStore& store, const QString& logFile) {
    const QDir folder = QFileInfo(logFile).dir();
    for (const QFileInfo& file : folder.entryInfoList({QStringLiteral("*.log")}, QDir::Files))
        store.addPath(file.filePath());
}

} // namespace

void SupportInformation::show(QWidget& parent, const QString& logFile) {
    auto* window = parent.findChild<SupportWindow*>();
    if (window == nullptr) {
        SupportWindow::Dependencies dependencies;
        dependencies.storeHandler = [logFile](QNSupportLogStore& store) {
            addLogs(store, logFile);
        };
        window = new SupportWindow(std::move(dependencies), &parent);
        platform::moveToCenter(*window, *parent.screen());
    }
    platform::bringToFront(*window);
}

void SupportInformation::cleanUp() {
    platform::DispatchQueue::global()->async([] {
        QNSupportLogStore::removeLeftovers(QString::fromStdString(platform::Bundle::main().name()));
    });
}
