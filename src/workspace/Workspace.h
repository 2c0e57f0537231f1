#pragma once

#include "workspace/LetterTile.h"

#include <QIcon>
#include <QList>
#include <QString>

#include <cstdint>
#include <functional>
#include <optional>

/// A program that a person would say is running in this session.
struct RunningApplication {
    std::uint32_t pid = 0; ///< of its main process
    QString localizedName; ///< the same that the audio plug-in gives it, should it play
    QString bundlePath;    ///< its desktop entry; empty when it has none
    QString executablePath = {};

    bool operator==(const RunningApplication&) const = default;
};

/// What a program is known by to whoever asks about it.
struct ProgramReference {
    std::uint32_t pid = 0; ///< of its main process
    QString name;
    QString path; ///< of its executable; empty when unknown
};

/// What the desktop knows of programs: which of them run, what they look like, and why they are
/// called so. An interface, so that tests hand in plain data. The main thread only, with an
/// application object.
class Workspace {
  public:
    /// The desktop's own, never destroyed; begins to look when it is first asked for, which is
    /// after the thread's run loop has been made.
    static Workspace& shared();

    virtual ~Workspace() = default;
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    /// The regular ones, in the order in which they came. Nothing before the first look is over.
    virtual std::optional<QList<RunningApplication>> runningApplications() const = 0;

    /// Has the list be brought up to date soon, for changes that the desktop does not tell of.
    virtual void lookAgain() = 0;

    /// A program's icon, else a tile with its letter. Never null; the same one until a change is
    /// told. When nothing is known of a program yet, that is found out, and the change told.
    virtual QIcon iconForProgram(const ProgramReference& program) const = 0;

    /// What stands for a program of which nothing is known. Never null.
    virtual QIcon genericApplicationIcon() const = 0;

    /// A sentence for a person: why the program has its name. Empty as long as that is not known.
    virtual QString whyNamed(const ProgramReference& program) const = 0;

    /// For all tiles; a change of the icons, which is told.
    virtual void setTileColors(const TileColors& colors) = 0;

    /// Has `handler` be called after runningApplications(), or an icon, has changed, in place of
    /// the one before; null for none.
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
