#pragma once

#include "workspace/LetterTile.h"

#include <QIcon>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

/// A program that the user would consider running in this session.
struct RunningApplication {
    std::uint32_t pid = 0; ///< of its main process
    QString localizedName; ///< the same as the audio plug-in uses when it plays
    QString bundlePath;    ///< its desktop entry; empty if it has none
    QString executablePath = {};

    bool operator==(const RunningApplication&) const = default;
};

/// Identifies a program in queries.
struct ProgramReference {
    std::uint32_t pid = 0; ///< of its main process
    QString name;
    QString path; ///< of its executable; empty when unknown
};

/// The desktop's knowledge of programs: the running ones, their icons, and the reasons for their
/// names. An interface, so that tests can use plain data. Main thread only, with an application
/// object.
class Workspace {
  public:
    /// Posted, without an object, after the handler below has been called.
    inline static const QString didChangeNotification =
        QStringLiteral("WorkspaceDidChangeNotification");

    /// The real desktop's workspace, never destroyed. Created on first use, which must be after the
    /// creation of the thread's run loop.
    static Workspace& shared();

    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// The regular applications, in the order in which they appeared. Nothing before the first scan
    /// is complete.
    [[nodiscard]] virtual std::optional<QList<RunningApplication>> runningApplications() const = 0;

    /// Updates the list soon, for changes that the desktop does not report.
    virtual void lookAgain() = 0;

    /// A program's icon, else a tile with its letter. Never null; the same one until a change is
    /// reported. An unknown program is looked up in the background, and the change reported.
    [[nodiscard]] virtual QIcon iconForProgram(const ProgramReference& program) const = 0;

    /// The icon of the application of that name; the generic one if there is no such application.
    /// It is looked up in the background, like those of programs.
    [[nodiscard]] virtual QIcon iconForApplication(const QString& name) const = 0;

    /// The icon of an unknown program: the desktop's, else the bundle's. Null only if both are
    /// damaged.
    [[nodiscard]] virtual QIcon genericApplicationIcon() const = 0;

    /// A sentence for the user: the reason for the program's name. Empty while unknown.
    [[nodiscard]] virtual QString whyNamed(const ProgramReference& program) const = 0;

    /// Sets the colours of all tiles, and reports a change of the icons.
    virtual void setTileColors(const TileColors& colors) = 0;

    /// Sets the handler that is called after runningApplications() or an icon has changed; null for
    /// none.
    void setRunningApplicationsHandler(std::function<void()> handler) {
        handler_ = std::move(handler);
    }

  protected:
    Workspace() = default;

    void tellRunningApplications() const;

  private:
    std::function<void()> handler_;
};
