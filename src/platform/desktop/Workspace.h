#pragma once

#include <QIcon>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>

namespace platform {

/// A program with windows that is running in this session.
struct RunningApplication {
    std::uint32_t pid = 0;
    QString localizedName;
    QString bundlePath; ///< its bundle or desktop entry; empty when it has none

    bool operator==(const RunningApplication&) const = default;
};

/// What the desktop knows of programs: which of them run, and what they look like. An interface, so
/// that tests hand in plain data. The main thread only, with an application object.
class Workspace {
  public:
    /// The desktop's own, never destroyed. For now it lists nothing and knows the generic icon
    /// only.
    static Workspace& shared();

    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// The regular ones, in the order in which they came.
    virtual QList<RunningApplication> runningApplications() const = 0;

    /// The icon of the executable, bundle or desktop entry at `path`, the generic one when it has
    /// none. Never null.
    virtual QIcon iconForPath(const QString& path) const = 0;

    /// What stands for a program of which nothing is known. Never null.
    virtual QIcon genericApplicationIcon() const = 0;

    /// Has `handler` be called after runningApplications() has changed, in place of the one before;
    /// null for none.
    void setRunningApplicationsHandler(std::function<void()> handler) {
        handler_ = std::move(handler);
    }

  protected:
    Workspace() = default;

    void tellRunningApplications() const {
        if (const auto handler = handler_)
            handler();
    }

  private:
    std::function<void()> handler_;
};

} // namespace platform
