#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>

#include <mutex>

/// What Qt says while its application object is made. Without a display that object ends the
/// program; this says on standard error, in one sentence, what to do about it. What else is said
/// goes to the system log when the start is over. One at a time.
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
    std::mutex mutex_;
    QStringList messages_; // guarded by mutex_
};
