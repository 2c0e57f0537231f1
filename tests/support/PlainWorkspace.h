#pragma once

#include "platform/desktop/Workspace.h"

#include <QHash>
#include <QPixmap>

namespace support {

/// A desktop on which runs what the test says.
class PlainWorkspace final : public platform::Workspace {
  public:
    void setRunningApplications(QList<platform::RunningApplication> applications) {
        applications_ = std::move(applications);
        tellRunningApplications();
    }

    /// The icon that the path has from now on.
    QIcon addIcon(const QString& path) { return icons_[path] = someIcon(); }

    QList<platform::RunningApplication> runningApplications() const override {
        return applications_;
    }
    QIcon iconForPath(const QString& path) const override { return icons_.value(path, generic_); }
    QIcon genericApplicationIcon() const override { return generic_; }

  private:
    static QIcon someIcon() { return QIcon(QPixmap(1, 1)); }

    QList<platform::RunningApplication> applications_;
    QHash<QString, QIcon> icons_;
    const QIcon generic_ = someIcon();
};

} // namespace support
