#pragma once

#include "platform/base/MonotonicClock.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

/// What a person has done to programs, the last of which can be taken back, and done again until
/// something else is done. Moves of one slider that belong together, by a drag or by keys that
/// follow each other within a second, are one. Main thread only.
class UndoHistory {
  public:
    /// What it holds at most; the oldest is forgotten.
    static constexpr std::size_t most = 100;

    /// The ways in which a gesture is taken back or done again: those of the mouse. What they
    /// report to the history meanwhile is no new gesture.
    struct Actions {
        std::function<void(const QString& program, int percent)> setVolume;
        std::function<void(const QString& program, bool muted)> setMuted;
        std::function<void(const QString& process, bool ignored)> setIgnored;
    };

    /// `changed` is called when what can be taken back or done again is another; may be null.
    explicit UndoHistory(Actions actions, std::function<void()> changed = nullptr);

    /// After a gesture. `program` is the displayed name, by which settings are kept, `process` the
    /// name that is ignored.
    void volumeChanged(const QString& program, int before, int after);
    void volumeReleased(const QString& program);
    void muteChanged(const QString& program, bool muted);
    void ignoredChanged(const QString& process, bool ignored);

    bool canUndo() const noexcept { return done_ > 0; }
    bool canRedo() const noexcept { return done_ < gestures_.size(); }

    /// What they would take back and do again, for people; empty for nothing.
    QString undoText() const;
    QString redoText() const;

    /// Nothing happens when there is nothing.
    void undo();
    void redo();

  private:
    enum class Kind { volume, mute, ignored };
    struct Gesture {
        Kind kind;
        QString name;
        int before;
        int after;
    };

    void add(Gesture gesture);
    bool belongsToLast(const QString& program) const;
    void follow(const Gesture& gesture, int value);
    void tell() const;
    static QString textOf(const Gesture& gesture);

    const Actions actions_;
    const std::function<void()> changed_;
    std::vector<Gesture> gestures_;
    std::size_t done_ = 0; // of them; what follows has been taken back
    bool isFollowing_ = false;
    bool isHeld_ = false; // the slider of the last one has not been released
    platform::MonotonicClock::time_point last_;
};
