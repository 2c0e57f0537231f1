#pragma once

#include "framework/application/OptionParser.h"
#include "framework/application/QNSignalProxy.h"
#include "platform/base/Mutex.h"

#include "platform/text/Format.h"

#include <QDateTime>
#include <QObject>
#include <QString>
#include <QStringList>

#include <atomic>
#include <cstdint>
#include <exception>
#include <optional>

class qnlog_handle;

/// The application object, of which a program has one. It parses the options, finds the support
/// folders, keeps the log, delivers POSIX signals on the main thread, and runs its own event loop;
/// QNGUIApplication is the version with windows. The object created last is the current one, to
/// which everything in the program logs, see QNLog().
///
/// Exceptions of hooks, observers and the event loop are logged at level 1, with the call stack,
/// and the program goes on. Main thread only, except where a function says otherwise.
class QNApplication : public QObject {
    Q_OBJECT

  public:
    /// What is posted to platform::NotificationCenter around launch and end.
    static constexpr const char* willFinishLaunching =
        "QNApplicationWillFinishLaunchingNotification";
    static constexpr const char* didFinishLaunching = "QNApplicationDidFinishLaunchingNotification";
    static constexpr const char* willTerminate = "QNApplicationWillTerminateNotification";

    QNApplication();
    ~QNApplication() override;

    /// Null before there is one. Any thread.
    static QNApplication* current() noexcept;
    static void setCurrent(QNApplication* application) noexcept;

    /// The process's.
    static QStringList arguments();
    static void setArguments(const QStringList& arguments);
    static QNOptions options();
    static QDateTime applicationLaunchDate();

    /// Runs the program and returns its exit status.
    virtual int main(int argc, char** argv);

    /// Calls the hooks around launching, then serves the run loop until terminate().
    void run();

    /// Runs the thread's event loop for so many seconds; without one the thread just waits. Any
    /// thread.
    virtual void waitInEventLoopFor(double seconds);

    /// Ends the program with status 0, after applicationWillTerminate(); from another thread than
    /// the main one a little later. Only the first call counts.
    virtual void terminate();

    /// Parses the process's arguments; the old options stay when that fails.
    void parseOptions();
    virtual std::optional<QNOptions> parseOptions(const QStringList& arguments) const;

    /// The names of the valid options; nothing if the program declares none.
    virtual std::optional<QStringList> validOptions() const { return std::nullopt; }

    /// The support folder of that name, by default the bundle's name; see makeSupportPath(). The
    /// other two are computed once per process.
    QString applicationSupportPathWithLeaf(const QString& leaf, bool shared) const;
    QString applicationSupportPath() const;
    QString sharedApplicationSupportPath() const;

    QString applicationSupportLeaf() const { return applicationSupportLeaf_; }
    void setApplicationSupportLeaf(const QString& leaf) { applicationSupportLeaf_ = leaf; }

    /// Opens a log file, named after the application and in "Logs" of the support folder if nothing
    /// else is given, and logs to it from now on. If it cannot be opened, nothing changes.
    void createLogFile(QString fileName, QString directory);

    /// A handle that is replaced is closed, which waits for its disk; other threads can log
    /// meanwhile. Null: no log file. The last handle is closed with the application object, but not
    /// at the end of the program, which waits for disks as qnlog.h describes.
    qnlog_handle* logHandle() const;
    void setLogHandle(qnlog_handle* handle);

    /// Logs a text formatted like platform::formatted(), at level 3 or the given one; to the system
    /// log if there is no log file. Any thread.
    template <typename... A>
    void log(const char* format, const A&... arguments) {
        logWithLevel(3, format, arguments...);
    }
    template <typename... A>
    void logWithLevel(std::uint32_t level, const char* format, const A&... arguments) {
        if (isLogged(level))
            logText(level, platform::formatted(QString::fromUtf8(format), arguments...));
    }
    void logText(std::uint32_t level, const QString& text);

    /// Logs an exception with its place and call stack. Any thread.
    static void logException(unsigned place, const std::exception_ptr& exception) noexcept;

    std::uint64_t physicalMemory() const; ///< bytes
    unsigned physicalCPUCount() const;
    unsigned availableCPUCount() const;
    unsigned activeCPUCount() const;
    bool sixtyFourBitSystem() const noexcept { return sizeof(void*) == 8; }
    QString machineModelName() const;
    bool minimalSystem() const;         ///< in single-user mode
    unsigned machineSleepTimer() const; ///< minutes, 0 for never
    QString universallyUniqueString() const;

    /// Calls the method of that name of `target`, invokable and taking an int, when the signal
    /// arrives. A destroyed target is removed. Numbers of 0 or less are ignored.
    void addObserver(QObject* target, const char* selector, int signal);

    /// A null selector stands for any method, signal -1 for every signal.
    void removeObserver(const QObject* target, const char* selector, int signal);

    /// Calls `handler` on the queue, by default the main one. The proxy can be removed.
    std::shared_ptr<QNSignalProxy>
    addObserverForSignal(int signal, const std::shared_ptr<platform::DispatchQueue>& queue,
                         QNSignalProxy::Handler handler);
    void addObserverForSignal(int signal, const std::shared_ptr<QNSignalProxy>& proxy);
    void removeObserverForSignal(int signal, const std::shared_ptr<QNSignalProxy>& proxy);

    /// Signals are held while there have been more calls of disableSignals() than of
    /// enableSignals(). The first returns whether this call stopped delivery, the second whether
    /// signals are delivered. Any thread.
    bool disableSignals();
    bool enableSignals();
    bool deliverSignals() const noexcept { return signalsDisabled_ <= 0; }
    bool setDeliverSignals(bool deliver) { return deliver ? enableSignals() : disableSignals(); }

    /// Calls the observers of all pending signals, the newest observer of each first.
    void signalDidFire();

    virtual void applicationWillFinishLaunching() {}
    virtual void applicationDidFinishLaunching();
    virtual void applicationWillTerminate() {}

    bool launchComplete() const noexcept { return launchComplete_; }
    void setLaunchComplete(bool complete) noexcept { launchComplete_ = complete; }

    /// Whether the program has been told to end.
    [[nodiscard]] bool shouldExit() const noexcept { return shouldExit_; }

  protected:
    void setShouldExit() noexcept { shouldExit_ = true; }

    friend class PlatformApplication;
    void launch();
    void end();

  private:
    bool isLogged(std::uint32_t level) const;
    void logMachine();
    void raiseLogLevelIfAsked();
    void updateListening();

    mutable platform::SharedMutex logMutex_;
    qnlog_handle* logHandle_ GUARDED_BY(logMutex_) = nullptr;
    QString applicationSupportLeaf_;
    bool shouldExit_ = false;
    bool launchComplete_ = false;
    std::atomic<std::int64_t> signalsDisabled_{0};
};

/// Logs to the current application object; while there is none, to the system log. Any thread.
void QNLogText(std::uint32_t level, const QString& text);

template <typename... A>
void QNLog(std::uint32_t level, const char* format, const A&... arguments) {
    if (QNApplication* const application = QNApplication::current())
        application->logWithLevel(level, format, arguments...);
    else
        QNLogText(level, platform::formatted(QString::fromUtf8(format), arguments...));
}
