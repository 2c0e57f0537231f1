#include "platform/loop/ReadBuffer.h"

#include "platform/loop/RunLoop.h"

namespace platform {

ReadBuffer::ReadBuffer(RunLoop& loop) : loop_(loop) {
    if (loop_.spareBuffers_.empty()) {
        bytes_.resize(usualSize);
    } else {
        bytes_ = std::move(loop_.spareBuffers_.back());
        loop_.spareBuffers_.pop_back();
    }
}

ReadBuffer::~ReadBuffer() {
    // One that had to grow is given up, so that one unusual peer costs memory only once.
    if (bytes_.size() == usualSize)
        loop_.spareBuffers_.push_back(std::move(bytes_));
}

} // namespace platform
