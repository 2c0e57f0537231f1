#include "plugin/volume/ChangeAuthor.h"

void ChangeAuthor::uphold(TimePoint now) noexcept {
    hold_ = VolumeHold(now);
    linked_ = false;
}

ChangeAuthor::Author ChangeAuthor::of(TimePoint now) const noexcept {
    // The session manager writes to notification sounds whenever a slider of the desktop moves.
    const bool isNotification = kind_ == StreamKind::notification;
    if (!hold_.isOver(now) && (!linked_ || isNotification))
        return Author::sessionManager;
    if (kind_ == StreamKind::page || (!isNotification && now < startEnds_))
        return Author::program;
    return Author::person;
}
