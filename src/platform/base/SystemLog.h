#pragma once

#include <string_view>

namespace platform {

enum class LogPriority { error, warning, info };

/// Writes one line to the system log (syslog), and to standard error if that does not lead to the
/// same log. For the layers below the application log, and for programs without one. Control
/// characters become question marks. Never throws; a line that cannot be written is lost. Any
/// thread.
[[gnu::format(printf, 2, 3)]] void systemLog(LogPriority priority, const char* format,
                                             ...) noexcept;

/// While it lives, receives the lines of all threads instead of the system log: for tests, and to
/// show lines to the user. line() is called on the thread that wrote the line and must not write to
/// the log. Sinks must be destroyed in reverse order of creation.
class SystemLogSink {
  public:
    SystemLogSink();
    virtual ~SystemLogSink();
    SystemLogSink(const SystemLogSink&) = delete;
    SystemLogSink& operator=(const SystemLogSink&) = delete;

    virtual void line(LogPriority priority, std::string_view text) noexcept = 0;

  protected:
    /// Stops receiving lines, and waits for calls in progress. A derived class calls it first in
    /// its destructor, since line() uses its members.
    void end() noexcept;

  private:
    SystemLogSink* previous_ = nullptr;
};

} // namespace platform
