#include "framework/application/QNApplication.h"

#include "framework/application/ExceptionPlaces.h"
#include "framework/application/SignalTable.h"
#include "framework/application/SupportPath.h"
#include "framework/log/qnlog.h"
#include "platform/base/Mutex.h"

#include "platform/base/CallStack.h"
#include "platform/base/Directories.h"
#include "platform/base/ExceptionReport.h"
#include "platform/base/SystemLog.h"
#include "platform/base/ThreadCalls.h"
#include "platform/bundle/Bundle.h"
#include "platform/bus/NotificationCenter.h"
#include "platform/desktop/SleepTimer.h"
#include "platform/files/BackupExclusion.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/processes/SystemFacts.h"
#include "platform/text/ByteCount.h"
#include "platform/window/ModifierKeys.h"

#include <QUuid>

#include <cstdlib>
#include <stdexcept>
#include <unistd.h>

using platform::guarded;

namespace {

struct Process {
    QStringList arguments;
    QNOptions options;
    QDateTime launchDate;
    QString userSupportPath;
    QString sharedSupportPath;
};

Process& process() {
    static Process facts;
    return facts;
}

std::atomic<QNApplication*> currentApplication{nullptr};

bool isMainThread() {
    return ::gettid() == ::getpid();
}

platform::LogPriority priorityOf(std::uint32_t level) {
    return level <= qnlog_error     ? platform::LogPriority::error
           : level == qnlog_warning ? platform::LogPriority::warning
                                    : platform::LogPriority::info;
}

QString qn_formattedCallStackReturnAddresses(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const platform::Traced& traced) {
        return QString::fromStdString(traced.callStack().description());
    } catch (...) {
        return QStringLiteral("(of the place where it was caught)\n") +
               QString::fromStdString(platform::CallStack::here().description());
    }
}

QString textOf(const std::exception_ptr& exception) {
    return QString::fromStdString(platform::describeException(exception));
}

/// The form of the event loop's and the observers' messages, which name the function.
void logExceptionIn(const char* function, unsigned place) {
    const auto exception = std::current_exception();
    QNLog(qnlog_error, "%s::%u Exception: %@ Backtrace: %@", function, place, textOf(exception),
          qn_formattedCallStackReturnAddresses(exception));
}

QString bundleName() {
    const std::string& name = platform::Bundle::main().name();
    return QString::fromStdString(name.empty() ? program_invocation_short_name : name);
}

} // namespace

QNApplication::QNApplication() {
    setCurrent(this);
    process().launchDate = QDateTime::currentDateTime();
    platform::replaceExceptionHook(
        [](unsigned place, const std::exception_ptr& exception) noexcept {
            logException(place, exception);
        });
}

QNApplication::~QNApplication() {
    QNApplication* self = this;
    if (currentApplication.compare_exchange_strong(self, nullptr))
        SignalTable::instance().close(); // the run loop may go next
    // At the end of the program the log itself sees to what waits in it.
    if (!shouldExit_)
        setLogHandle(nullptr);
}

QNApplication* QNApplication::current() noexcept {
    return currentApplication;
}

void QNApplication::setCurrent(QNApplication* application) noexcept {
    currentApplication = application;
}

QStringList QNApplication::arguments() {
    return process().arguments;
}

void QNApplication::setArguments(const QStringList& arguments) {
    process().arguments = arguments;
}

QNOptions QNApplication::options() {
    return process().options;
}

QDateTime QNApplication::applicationLaunchDate() {
    return process().launchDate;
}

int QNApplication::main(int /*argc*/, char** /*argv*/) {
    run();
    return 0;
}

void QNApplication::run() {
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue(loop);
    guarded(kExceptionInOptions, [this] { parseOptions(); });
    launch();
    while (!shouldExit_)
        waitInEventLoopFor(5.0);
}

void QNApplication::launch() {
    auto& center = platform::NotificationCenter::standard();
    guarded(kExceptionInWillFinishLaunching, [this] { applicationWillFinishLaunching(); });
    guarded(kExceptionInWillFinishLaunchingNotification,
            [&] { center.post(QLatin1String(willFinishLaunching)); });
    guarded(kExceptionInDidFinishLaunching, [this] { applicationDidFinishLaunching(); });
    guarded(kExceptionInDidFinishLaunchingNotification,
            [&] { center.post(QLatin1String(didFinishLaunching)); });
}

void QNApplication::end() {
    setShouldExit();
    guarded(kExceptionInWillTerminateNotification,
            [] { platform::NotificationCenter::standard().post(QLatin1String(willTerminate)); });
    guarded(kExceptionInWillTerminate, [this] { applicationWillTerminate(); });
}

void QNApplication::applicationDidFinishLaunching() {
    launchComplete_ = true;
}

void QNApplication::waitInEventLoopFor(double seconds) {
    using platform::MonotonicClock;
    platform::RunLoop* const loop = platform::RunLoop::current();
    const auto end = MonotonicClock::now() + std::chrono::round<MonotonicClock::duration>(
                                                 std::chrono::duration<double>(seconds));
    for (auto now = MonotonicClock::now(); now < end && !shouldExit_; now = MonotonicClock::now()) {
        if (!loop) { // a thread without one has nothing to serve
            platform::threadCalls().pause(end - now);
            continue;
        }
        try {
            loop->turnWithin(end - now);
        } catch (...) {
            logExceptionIn(__func__, kExceptionInEventLoop);
        }
    }
}

void QNApplication::terminate() {
    if (!isMainThread()) {
        platform::DispatchQueue::main()->async(
            [this] { guarded(kExceptionInTerminate, [this] { terminate(); }); });
        return;
    }
    if (std::exchange(shouldExit_, true))
        return;
    SignalTable::instance().silence();
    end();
    std::exit(0);
}

void QNApplication::parseOptions() {
    if (const auto parsed = parseOptions(arguments()))
        process().options = *parsed;
}

std::optional<QNOptions> QNApplication::parseOptions(const QStringList& arguments) const {
    try {
        return parseQNOptions(arguments);
    } catch (...) {
        return std::nullopt;
    }
}

QString QNApplication::applicationSupportPathWithLeaf(const QString& leaf, bool shared) const {
    return makeSupportPath(leaf.isEmpty() ? bundleName() : leaf, shared);
}

QString QNApplication::applicationSupportPath() const {
    QString& path = process().userSupportPath;
    if (path.isEmpty())
        path = applicationSupportPathWithLeaf(applicationSupportLeaf_, false);
    return path;
}

QString QNApplication::sharedApplicationSupportPath() const {
    QString& path = process().sharedSupportPath;
    if (path.isEmpty())
        path = applicationSupportPathWithLeaf(applicationSupportLeaf_, true);
    return path;
}

void QNApplication::createLogFile(QString fileName, QString directory) {
    if (fileName.isEmpty())
        fileName = platform::formatted(QStringLiteral("%@.log"), bundleName());
    if (directory.isEmpty())
        directory = applicationSupportPath() + QStringLiteral("/Logs");
    const std::string folder = directory.toStdString();
    // If it cannot be made, the file cannot be opened either.
    [[maybe_unused]] const bool made = platform::makeDirectories(folder, 0700);
    if (::getuid() != ::geteuid()) [[maybe_unused]]
        const int given = ::chown(folder.c_str(), ::getuid(), gid_t(-1));
    if (!platform::isExcludedFromBackups(folder)) [[maybe_unused]]
        const bool excluded = platform::excludeFromBackups(folder);
    qnlog_handle* const handle = qnlog_open((folder + "/" + fileName.toStdString()).c_str(),
                                            QNLOG_BANNER | QNLOG_ROTATE | QNLOG_BOM);
    if (!handle)
        return;
    setLogHandle(handle);
    logMachine();
    raiseLogLevelIfAsked();
}

void QNApplication::logMachine() {
    constexpr std::uint64_t hertzPerMegahertz = 1'000'000;
    const unsigned physical = physicalCPUCount();
    const unsigned available = availableCPUCount();
    const QString processors =
        available > physical ? platform::formatted(QStringLiteral("%u (%u)"), physical, available)
                             : platform::formatted(QStringLiteral("%u"), physical);
    log("**** %@: %@ CPUs @ %u Mhz, %@ RAM ****", machineModelName(), processors,
        platform::processorFrequency() / hertzPerMegahertz,
        platform::binaryByteCount(physicalMemory()));
}

void QNApplication::raiseLogLevelIfAsked() {
    constexpr Qt::KeyboardModifiers both = Qt::ControlModifier | Qt::MetaModifier;
    qnlog_handle* const handle = logHandle();
    if ((platform::modifierKeys() & both) == both && qnlog_getlevel(handle) < qnlog_debug)
        qnlog_setlevel(handle, qnlog_debug);
}

qnlog_handle* QNApplication::logHandle() const {
    const platform::SharedLock lock(logMutex_);
    return logHandle_;
}

void QNApplication::setLogHandle(qnlog_handle* handle) {
    {
        const platform::ScopedLock lock(logMutex_);
        std::swap(handle, logHandle_);
        if (handle == logHandle_)
            return;
    }
    qnlog_close(handle); // may wait for a disk; the other threads need not
}

bool QNApplication::isLogged(std::uint32_t level) const {
    const platform::SharedLock lock(logMutex_);
    return !logHandle_ || qnlog_wants(logHandle_, level);
}

void QNApplication::logText(std::uint32_t level, const QString& text) {
    const platform::SharedLock lock(logMutex_);
    if (logHandle_)
        qnlog_msg(logHandle_, level, "%s", text.toUtf8().constData());
    else if (!minimalSystem())
        platform::systemLog(priorityOf(level), "%s", text.toUtf8().constData());
}

void QNLogText(std::uint32_t level, const QString& text) {
    if (QNApplication* const application = QNApplication::current())
        application->logText(level, text);
    else
        platform::systemLog(priorityOf(level), "%s", text.toUtf8().constData());
}

void QNApplication::logException(unsigned place, const std::exception_ptr& exception) noexcept {
    try {
        QNLog(qnlog_error, "Exception @ %u: %@ Backtrace: %@", place, textOf(exception),
              qn_formattedCallStackReturnAddresses(exception));
    } catch (...) {
        platform::systemLog(platform::LogPriority::error, "Exception @ %u", place);
    }
}

std::uint64_t QNApplication::physicalMemory() const {
    return platform::physicalMemory();
}

unsigned QNApplication::physicalCPUCount() const {
    return platform::physicalProcessorCount();
}

unsigned QNApplication::availableCPUCount() const {
    return platform::availableProcessorCount();
}

unsigned QNApplication::activeCPUCount() const {
    return platform::activeProcessorCount();
}

QString QNApplication::machineModelName() const {
    const std::string name = platform::machineModelName();
    return QString::fromStdString(name.empty() ? "Unknown machine" : name);
}

bool QNApplication::minimalSystem() const {
    return platform::isSingleUserMode();
}

unsigned QNApplication::machineSleepTimer() const {
    return platform::machineSleepTimer();
}

QString QNApplication::universallyUniqueString() const {
    return QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
}

void QNApplication::addObserver(QObject* target, const char* selector, int signal) {
    if (signal <= 0)
        return;
    SignalTable& table = SignalTable::instance();
    table.open([] {
        if (QNApplication* const application = current())
            guarded(kExceptionInSignals, [&] { application->signalDidFire(); });
    });
    auto* const proxy = qobject_cast<QNSignalProxy*>(target);
    table.add(signal, {target, selector, proxy ? proxy->shared_from_this() : nullptr});
}

void QNApplication::removeObserver(const QObject* target, const char* selector, int signal) {
    SignalTable::instance().remove(signal, target, selector);
}

std::shared_ptr<QNSignalProxy>
QNApplication::addObserverForSignal(int signal,
                                    const std::shared_ptr<platform::DispatchQueue>& queue,
                                    QNSignalProxy::Handler handler) {
    auto proxy = std::make_shared<QNSignalProxy>(std::move(handler), queue);
    addObserverForSignal(signal, proxy);
    return proxy;
}

void QNApplication::addObserverForSignal(int signal, const std::shared_ptr<QNSignalProxy>& proxy) {
    addObserver(proxy.get(), "signalHandler", signal);
}

void QNApplication::removeObserverForSignal(int signal,
                                            const std::shared_ptr<QNSignalProxy>& proxy) {
    removeObserver(proxy.get(), "signalHandler", signal);
}

bool QNApplication::disableSignals() {
    const bool isFirst = signalsDisabled_.fetch_add(1) == 0;
    if (isFirst)
        updateListening();
    return isFirst;
}

bool QNApplication::enableSignals() {
    std::int64_t left = signalsDisabled_.fetch_sub(1) - 1;
    if (left > 0)
        return false;
    signalsDisabled_.compare_exchange_strong(left, 0);
    updateListening();
    return true;
}

void QNApplication::updateListening() {
    const auto update = [] {
        if (const QNApplication* const application = current())
            SignalTable::instance().setListening(application->deliverSignals());
    };
    if (isMainThread())
        update();
    else
        platform::DispatchQueue::main()->async(update);
}

void QNApplication::signalDidFire() {
    SignalTable& table = SignalTable::instance();
    while (deliverSignals()) {
        const auto signal = table.next();
        if (!signal)
            return;
        for (const SignalTable::Observer& observer : table.observers(*signal)) {
            try {
                if (observer.target &&
                    !QMetaObject::invokeMethod(observer.target, observer.selname.constData(),
                                               Qt::DirectConnection, Q_ARG(int, *signal)))
                    throw platform::TracedError<std::logic_error>("no method " +
                                                                  observer.selname.toStdString());
            } catch (...) {
                logExceptionIn(__func__, kExceptionInSignalObserver);
            }
        }
    }
    table.setListening(false); // until enableSignals()
}
