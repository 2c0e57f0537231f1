#pragma once

#include "platform/base/SystemLog.h"

#include <cstddef>
#include <mutex>
#include <string>
#include <vector>

namespace support {

/// Keeps the lines that would go to the system log while it lives. Any thread.
class SystemLogRecorder : private platform::SystemLogSink {
  public:
    ~SystemLogRecorder() override { end(); }

    struct Line {
        platform::LogPriority priority;
        std::string text;
    };

    std::vector<Line> lines() const;
    bool contains(std::string_view text) const { return count(text) > 0; }

    /// How many lines have `text` in them.
    std::size_t count(std::string_view text) const;
    void clear();

  private:
    void line(platform::LogPriority priority, std::string_view text) noexcept override;

    mutable std::mutex mutex_;
    std::vector<Line> lines_; // guarded by mutex_
};

} // namespace support
