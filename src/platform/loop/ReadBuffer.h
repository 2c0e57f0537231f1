#pragma once

#include <cstddef>
#include <vector>

namespace platform {

class RunLoop;

/// A large buffer of a run loop, borrowed for one read and its delivery. There is one for each
/// level of nested turns, since the bytes of an outer delivery are still in use while a nested loop
/// reads. Buffers are reused.
class ReadBuffer {
  public:
    /// More than the kernel queues for a Unix socket with default limits.
    static constexpr std::size_t usualSize = std::size_t{256} * 1024;

    explicit ReadBuffer(RunLoop& loop);
    ~ReadBuffer();
    ReadBuffer(const ReadBuffer&) = delete;
    ReadBuffer& operator=(const ReadBuffer&) = delete;

    std::vector<std::byte>& bytes() noexcept { return bytes_; }

  private:
    RunLoop& loop_;
    std::vector<std::byte> bytes_;
};

} // namespace platform
