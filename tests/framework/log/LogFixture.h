#pragma once

#include "framework/log/qnlog.h"
#include "framework/log/qnlog_handle.h"

#include "platform/base/WallClock.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <unistd.h>

using support::contentOf;

/// The time of day, which stops until a test sets it.
class ManualTimeOfDay {
  public:
    explicit ManualTimeOfDay(std::chrono::sys_seconds time) {
        set(time, 0);
        platform::WallClock::replaceSource([]() noexcept { return now.load(); });
    }
    ~ManualTimeOfDay() { platform::WallClock::replaceSource(nullptr); }
    ManualTimeOfDay(const ManualTimeOfDay&) = delete;
    ManualTimeOfDay& operator=(const ManualTimeOfDay&) = delete;

    static void set(std::chrono::sys_seconds time, int microseconds) {
        now = time + std::chrono::microseconds(microseconds);
    }

  private:
    static inline std::atomic<platform::WallClock::time_point> now;
};

struct LogCloser {
    void operator()(qnlog_handle* log) const { qnlog_close(log); }
};
using Log = std::unique_ptr<qnlog_handle, LogCloser>;

inline Log openLog(const std::string& path, std::uint32_t flags = 0) {
    return Log(qnlog_open(path.c_str(), flags));
}

/// Returns when the file has everything.
inline void drain(const Log& log) {
    log->flush();
}

/// What comes until the last writer of a FIFO closes it.
inline std::string readAll(int fifo) {
    std::string content;
    char buffer[4096];
    for (ssize_t got = 0; (got = ::read(fifo, buffer, sizeof buffer)) > 0;)
        content.append(buffer, static_cast<std::size_t>(got));
    return content;
}

class LogTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return folder_.path() / name; }

    void makeFile(const std::string& name, const std::string& content) const {
        std::ofstream(path(name)) << content;
    }

  private:
    const support::PrivateFolder folder_;
};
