#include "model/UndoHistory.h"

#include "model/MVCommAppValue.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QScopedValueRollback>

using platform::formatted;
using platform::MonotonicClock;

namespace {

constexpr std::chrono::seconds together{1};

} // namespace

UndoHistory::UndoHistory(Actions actions, std::function<void()> changed)
    : actions_(std::move(actions)), changed_(std::move(changed)) {}

bool UndoHistory::belongsToLast(const QString& program) const {
    if (done_ == 0 || canRedo())
        return false;
    const Gesture& last = gestures_.back();
    return last.kind == Kind::volume && last.name == program &&
           (isHeld_ || MonotonicClock::now() - last_ < together);
}

void UndoHistory::volumeChanged(const QString& program, int before, int after) {
    if (isFollowing_)
        return;
    if (belongsToLast(program)) {
        gestures_.back().after = after;
        last_ = MonotonicClock::now();
    } else if (before != after) {
        add({Kind::volume, program, before, after});
    } else {
        return;
    }
    isHeld_ = true;
}

/// A slider that has come back to where it was has done nothing.
void UndoHistory::volumeReleased(const QString& program) {
    if (isFollowing_ || !belongsToLast(program))
        return;
    isHeld_ = false;
    last_ = MonotonicClock::now();
    if (gestures_.back().before != gestures_.back().after)
        return;
    gestures_.pop_back();
    done_ = gestures_.size();
    tell();
}

void UndoHistory::muteChanged(const QString& program, bool muted) {
    add({Kind::mute, program, muted ? 0 : 1, muted ? 1 : 0});
}

void UndoHistory::ignoredChanged(const QString& process, bool ignored) {
    add({Kind::ignored, process, ignored ? 0 : 1, ignored ? 1 : 0});
}

void UndoHistory::add(Gesture gesture) {
    if (isFollowing_)
        return;
    gestures_.resize(done_);
    if (gestures_.size() == most)
        gestures_.erase(gestures_.begin());
    gestures_.push_back(std::move(gesture));
    done_ = gestures_.size();
    isHeld_ = false;
    last_ = MonotonicClock::now();
    tell();
}

void UndoHistory::undo() {
    if (!canUndo())
        return;
    const Gesture gesture = gestures_[--done_];
    follow(gesture, gesture.before);
}

void UndoHistory::redo() {
    if (!canRedo())
        return;
    const Gesture gesture = gestures_[done_++];
    follow(gesture, gesture.after);
}

void UndoHistory::follow(const Gesture& gesture, int value) {
    isHeld_ = false;
    {
        const QScopedValueRollback following(isFollowing_, true);
        if (gesture.kind == Kind::volume)
            actions_.setVolume(gesture.name, value);
        else if (gesture.kind == Kind::mute)
            actions_.setMuted(gesture.name, value != 0);
        else
            actions_.setIgnored(gesture.name, value != 0);
    }
    tell();
}

void UndoHistory::tell() const {
    if (changed_)
        changed_();
}

QString UndoHistory::textOf(const Gesture& gesture) {
    switch (gesture.kind) {
    case Kind::volume:
        return formatted(Texts::tr("Volume of \"%@\""), gesture.name);
    case Kind::mute:
        return formatted(gesture.after != 0 ? Texts::tr("Mute \"%@\"") : Texts::tr("Unmute \"%@\""),
                         gesture.name);
    case Kind::ignored:
        return formatted(Texts::tr("Ignore \"%@\""),
                         MVCommAppValue::displayNameForProcessName(gesture.name));
    }
    return {};
}

QString UndoHistory::undoText() const {
    return canUndo() ? textOf(gestures_[done_ - 1]) : QString();
}

QString UndoHistory::redoText() const {
    return canRedo() ? textOf(gestures_[done_]) : QString();
}
