#pragma once

#include "workspace/Workspace.h"

#include <QHash>
#include <QPixmap>

namespace support {

/// A desktop on which runs what the test says.
class PlainWorkspace final : public Workspace {
  public:
    void setRunningApplications(QList<RunningApplication> applications) {
        applications_ = std::move(applications);
        tellRunningApplications();
    }

    /// The icon that programs of the path, or the application of the name, have from now on.
    QIcon addIcon(const QString& path) { return icons_[path] = someIcon(); }

    void setIcon(const QString& name, const QIcon& icon) { icons_[name] = icon; }

    /// The reason that programs of the name have theirs.
    void setReason(const QString& name, const QString& reason) { reasons_[name] = reason; }

    /// How often the icon of each application has been asked for.
    const QHash<QString, int>& lookUps() const noexcept { return lookUps_; }

    /// How often somebody has wanted to know what runs now.
    int looks() const noexcept { return looks_; }

    std::optional<QList<RunningApplication>> runningApplications() const override {
        return applications_;
    }
    void lookAgain() override { ++looks_; }
    QIcon iconForProgram(const ProgramReference& program) const override {
        return icons_.value(program.path, generic_);
    }
    QIcon iconForApplication(const QString& name) const override {
        ++lookUps_[name];
        return icons_.value(name, generic_);
    }
    QString whyNamed(const ProgramReference& program) const override {
        return reasons_.value(program.name);
    }
    void setTileColors(const TileColors& /*colors*/) override {}
    QIcon genericApplicationIcon() const override { return generic_; }

  private:
    static QIcon someIcon() { return QIcon(QPixmap(1, 1)); }

    QList<RunningApplication> applications_;
    QHash<QString, QIcon> icons_;
    QHash<QString, QString> reasons_;
    mutable QHash<QString, int> lookUps_;
    int looks_ = 0;
    const QIcon generic_ = someIcon();
};

} // namespace support
