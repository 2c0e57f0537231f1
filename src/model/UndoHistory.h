#pragma once

#include "platform/base/MonotonicClock.h"

#include <QString>

#include <functional>
#include <optional>
#include <vector>

/// The undo history of user actions on programs. Related moves of one slider, by a drag or by keys
/// within a second, are merged into one action. Main thread only.
class UndoHistory {
  public:
    /// The maximum number of actions; the oldest are dropped.
    static constexpr std::size_t most = 100;

    /// How an action is undone or redone: the same operations as by mouse. What they report to the
    /// history meanwhile is not a new action.
    struct Actions {
        std::function<void(const QString& program, int percent)> setVolume;
        std::function<void(const QString& program, bool muted)> setMuted;
        std::function<void(const QString& process, bool ignored)> setIgnored;
    };

    /// `changed` is called when the next undo or redo action has changed; may be null.
    explicit UndoHistory(Actions actions, std::function<void()> changed = nullptr);

    /// Call these after a user action. `program` is the displayed name, the key of settings;
    /// `process` the name for the ignore list.
    void volumeChanged(const QString& program, int before, int after);
    void volumeReleased(const QString& program);
    void muteChanged(const QString& program, bool muted);
    void ignoredChanged(const QString& process, bool ignored);

    [[nodiscard]] bool canUndo() const noexcept { return done_ > 0; }
    [[nodiscard]] bool canRedo() const noexcept { return done_ < gestures_.size(); }

    /// The actions that undo and redo would affect, as text for the user; empty for none.
    [[nodiscard]] QString undoText() const;
    [[nodiscard]] QString redoText() const;

    /// Do nothing if there is no such action.
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
    std::size_t done_ = 0; // of them; the following ones have been undone
    bool isFollowing_ = false;
    bool isHeld_ = false; // the slider of the last action has not been released
    platform::MonotonicClock::time_point last_;
};
