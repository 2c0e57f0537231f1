#pragma once

#include "platform/base/Mutex.h"

#include <QString>
#include <QStringList>
#include <QtGlobal>

/// Handles Qt's messages while its application object is created. Without a display Qt ends the
/// program; this prints on standard error, in one sentence, what to do about it. Other messages go
/// to the system log when the start is over. One at a time.
class QtStartMessages {
  public:
    /// `argc` and `argv` are main()'s.
    QtStartMessages(int argc, char** argv);
    ~QtStartMessages();
    QtStartMessages(const QtStartMessages&) = delete;
    QtStartMessages& operator=(const QtStartMessages&) = delete;

  private:
    static void take(QtMsgType type, const QMessageLogContext& context, const QString& message);
    [[noreturn]] void fail(const QString& message);

    const bool isDisplayNamed_;
    const QtMessageHandler former_;
    platform::Mutex mutex_;
    QStringList messages_ GUARDED_BY(mutex_);
};
