#pragma once

#include <string_view>

namespace platform {

enum class LogPriority { error, warning, info };

/// Writes one line to the system log (syslog) and to standard error when there is one that doesn't
/// lead to the same place. For the layers below the application log, and for programs that have
/// none. Control characters become question marks. Never throws; a line that cannot be written is
/// lost. Any thread.
[[gnu::format(printf, 2, 3)]] void systemLog(LogPriority priority, const char* format,
                                             ...) noexcept;

/// Takes the lines of all threads in place of the system log while it lives: for tests, and for
/// whoever shows them to a person. Lines come on the thread that wrote them; line() must not write
/// any. Sinks end in the reverse order of their making.
class SystemLogSink {
  public:
    SystemLogSink();
    virtual ~SystemLogSink();
    SystemLogSink(const SystemLogSink&) = delete;
    SystemLogSink& operator=(const SystemLogSink&) = delete;

    virtual void line(LogPriority priority, std::string_view text) noexcept = 0;

  protected:
    /// Takes no more lines, and waits for those that are being taken. A derived class calls it
    /// first in its destructor, since line() uses its members.
    void end() noexcept;

  private:
    SystemLogSink* previous_ = nullptr;
};

} // namespace platform
