#pragma once

#include "BareWireServer.h"
#include "WirePlugins.h"

#include "comm/MVCommCallbacks.h"
#include "framework/application/QNApplication.h"
#include "framework/log/qnlog.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"

#include <atomic>
#include <cstddef>
#include <ctime>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

class MVCommunication;

/// The socket server with its run loop, without a toolkit's loop around it, and the bare loop, in
/// the same surroundings.
namespace bench {

/// What the servers' callbacks have been told, for one server at a time.
class Told : public MVCommCallbacks {
  public:
    explicit Told(bool tellsOfConnections = false) : tellsOfConnections_(tellsOfConnections) {
        messages = 0;
        levels = 0;
        silences = 0;
        awaited = awaitedSilences = 0;
    }

    MVCommDataCallback dataCallback() const override { return &take; }
    MVCommCallback connectionCallback() const override {
        return tellsOfConnections_ ? +[] { reached(); } : nullptr;
    }
    MVCommCallback disconnectionCallback() const override { return nullptr; }

    /// Throws unless just what the plug-ins have sent has come.
    static void expect(const WirePlugins& plugins);

    static inline std::atomic<std::size_t> messages; // written by the serving thread
    static inline double levels;
    static inline std::size_t silences;
    static inline std::size_t awaited; // messages or silences with which the run is over
    static inline std::size_t awaitedSilences;
    static inline std::function<void()> reached;

  protected:
    static void take(const MVCommActivityMessage* message);

  private:
    const bool tellsOfConnections_;
};

/// A log in a file that is gone when the figure is.
class Log {
  public:
    Log() : handle_(qnlog_open(path_.c_str(), 0)) {
        if (handle_ == nullptr)
            throw std::runtime_error("no log");
    }
    ~Log() { close(); }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    qnlog_handle* handle() const noexcept { return handle_; }
    qnlog_handle* release() noexcept { return std::exchange(handle_, nullptr); }
    void close() noexcept { qnlog_close(release()); }

    /// Throws unless there is a line for each check-in, in their order.
    void expectLines(std::size_t expected) const;

  private:
    const support::PrivateFolder folder_;
    const std::string path_ = folder_.path() / "log";
    qnlog_handle* handle_;
};

/// The application's.
class Ours {
  public:
    Ours(const std::string& path, MVCommCallbacks& callbacks, Log* log);

    void turn() { loop_.turn(); }
    void run() { loop_.run(); }
    void stop() { loop_.stop(); }
    void sendMessage(const MVCommConsoleMessage& message);
    std::size_t checkedIn() const;
    void closeLog() { application_->setLogHandle(nullptr); }

  private:
    platform::RunLoop loop_;
    std::optional<QNApplication> application_; // through which the server logs
    std::shared_ptr<MVCommunication> server_;
};

class Bare {
  public:
    Bare(const std::string& path, const MVCommCallbacks& callbacks, Log* log)
        : log_(log), server_(path, callbacks, log != nullptr ? log->handle() : nullptr) {}

    void turn() { server_.turn(); }
    void run() { server_.run(); }
    void stop() { server_.stop(); }
    void sendMessage(const MVCommConsoleMessage& message) { server_.sendMessage(message); }
    std::size_t checkedIn() const { return server_.checkedIn(); }
    void closeLog() { log_->close(); }

  private:
    Log* const log_;
    bench::BareWireServer server_;
};

/// Ends what would never end because something got lost.
class Watchdog {
  public:
    explicit Watchdog(std::function<void()> bite);
    ~Watchdog();
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

  private:
    std::promise<void> isOver_;
    std::thread thread_;
};

/// CPU time in ns.
double cpuTime(clockid_t clock);

/// Of the calling thread, in ns.
double cpuOf(const std::function<void()>& work);

/// One server with what it needs. It serves on the calling thread.
template <typename Server, typename Callbacks = Told>
class Scene {
  public:
    explicit Scene(Log* log = nullptr) : told_(log != nullptr), server_(path(), told_, log) {
        Told::reached = [this] { server_.stop(); };
    }

    std::string path() const { return folder_.path() / "socket"; }
    Server& server() noexcept { return server_; }

    WirePlugins connect(std::size_t count) {
        WirePlugins plugins(path(), count, [this] { server_.turn(); });
        // Until the last one is accepted.
        constexpr int turns = 8;
        for (int i = 0; i < turns; ++i)
            server_.turn();
        return plugins;
    }

    /// Serves until the callbacks have been told what is awaited.
    void run() {
        server_.run();
        if (hasFailed_)
            throw std::runtime_error("not all that was sent has come");
    }

    /// CPU time, in ns, for one of many messages. The plug-ins are always ahead: whenever the
    /// server comes to a connection, messages wait in it, each with another level than the one
    /// before.
    double stream(std::size_t connections) {
        constexpr std::size_t waiting = 32; // messages in each connection
        constexpr std::size_t messages = 96000;
        WirePlugins plugins = connect(connections);
        const auto serve = [&] {
            plugins.sendActivity(waiting);
            Told::awaited = plugins.sent();
            return cpuOf([&] { run(); });
        };
        serve();
        const std::size_t rounds = messages / waiting / connections;
        double time = 0;
        for (std::size_t i = 0; i < rounds; ++i)
            time += serve();
        Told::expect(plugins);
        return time / static_cast<double>(rounds * waiting * connections);
    }

    /// Runs `work` on a thread of its own, whose CPU time is the answer. When it throws, so does
    /// the run() in progress.
    std::future<double> start(const std::function<void()>& work) {
        return std::async(std::launch::async, [this, work] {
            try {
                work();
            } catch (...) {
                fail();
                throw;
            }
            return cpuTime(CLOCK_THREAD_CPUTIME_ID);
        });
    }

  private:
    void fail() {
        hasFailed_ = true;
        server_.stop();
    }

    const support::PrivateFolder folder_;
    Callbacks told_;
    Server server_;
    std::atomic<bool> hasFailed_ = false;
    const Watchdog watchdog_{[this] { fail(); }};
};

} // namespace bench
