#pragma once

#include "comm/MVCommLogText.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"

/// The log lines for user actions, worded as for actions in the window.
namespace ControlLog {

inline void volume(const QString& name, int percent) {
    QNLog(qnlog_user, "'%@' volume changed to %.2f", MVCommLogText(name), percent / 100.0);
}

inline void muted(const QString& name, bool muted) {
    QNLog(qnlog_user, "'%@' %@", MVCommLogText(name), muted ? "muted" : "unmuted");
}

inline void forgotten(const QString& name) {
    QNLog(qnlog_user, "'%@' forgotten", MVCommLogText(name));
}

} // namespace ControlLog
