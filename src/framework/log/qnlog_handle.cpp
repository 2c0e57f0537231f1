#include "framework/log/qnlog_handle.h"

#include "platform/base/Mutex.h"

#include <array>
#include <cstdio>
#include <utility>

using platform::WallClock;
using QN::log::LineQueue;
using QN::log::LogFile;

namespace {

constexpr std::int32_t backgroundPriority = -254;

std::uint64_t nextNumber() noexcept {
    static std::atomic<std::uint64_t> last{0};
    return ++last;
}

} // namespace

qnlog_handle::qnlog_handle(LogFile file, Settings settings)
    : settings_(std::move(settings))
    , number_(nextNumber())
    , lines_(settings_.bound, qnlog_user)
    , file_(std::move(file))
    , owedBeginning_(settings_.beginning)
    , queue_("com.quarnel.log", true, backgroundPriority) {
    if (!owedBeginning_.empty())
        startWriter();
}

qnlog_handle::~qnlog_handle() {
    finish();
}

void qnlog_handle::append(std::uint32_t level, WallClock::time_point time,
                          std::string_view text) noexcept {
    if (!text.empty())
        append({LineQueue::Kind::message, level, time, text});
}

void qnlog_handle::setLevel(std::uint32_t level) noexcept {
    append({LineQueue::Kind::levelChange, level, WallClock::now(), "log level changed"});
}

void qnlog_handle::append(const LineQueue::Record& record) noexcept {
    if (QN::async::queue::isOrphaned())
        return; // and the mutex of the lines may be locked for ever
    // Messages that precede a sudden end should be in the file by then.
    const bool isUrgent = record.level <= qnlog_error;
    const LineQueue::Demand demand = lines_.append(record, isUrgent);
    if (demand == LineQueue::Demand::start)
        startWriter();
    else if (demand == LineQueue::Demand::hurry)
        hurry_.set();
}

void qnlog_handle::startWriter() noexcept {
    try {
        queue_.enqueue([this, exists = exists_] {
            if (*exists)
                work();
        });
    } catch (...) { // out of memory: the messages wait for the next one
        lines_.writerFailed();
    }
}

/// The writer's task. Each takes what there is once, so that other queues get their turn.
void qnlog_handle::work() {
    {
        const platform::ScopedLock lock(writing_);
        writeWaiting();
    }
    if (!lines_.beginLingering()) {
        startWriter();
        return;
    }
    if (!isClosing_)
        hurry_.waitFor(settings_.lingering);
    if (!lines_.endLingering())
        startWriter();
}

void qnlog_handle::flush() noexcept {
    const platform::ScopedLock lock(writing_);
    writeWaiting();
}

void qnlog_handle::finish() noexcept {
    isClosing_ = true;
    if (lines_.hurry())
        hurry_.set();
    const platform::ScopedLock lock(writing_);
    writeWaiting();
    file_.close();
}

void qnlog_handle::destroyLater(qnlog_handle* log) noexcept {
    try {
        // A task may destroy its own queue, and then does not wait. A writer's task may still come
        // behind it.
        log->queue_.enqueue([log] {
            *log->exists_ = false;
            delete log;
        });
    } catch (...) { // out of memory; everything else has been released
    }
}

void qnlog_handle::writeWaiting() noexcept {
    if (!owedBeginning_.empty() && file_.write(owedBeginning_))
        owedBeginning_ = {};
    auto [chunks, gap] = lines_.take();
    while (!chunks.empty()) {
        write(chunks.front());
        LineQueue::Chunks written;
        written.splice(written.end(), chunks, chunks.begin());
        lines_.giveBack(std::move(written));
    }
    if (gap)
        write(*gap);
}

void qnlog_handle::write(const LineQueue::Chunk& chunk) noexcept {
    std::size_t offset = 0;
    LineQueue::Record record{};
    while (chunk.next(offset, record))
        write(record);
}

void qnlog_handle::write(const LineQueue::Record& record) noexcept {
    if (record.kind != LineQueue::Kind::message)
        level_.store(record.level, std::memory_order_relaxed);
    if (record.kind == LineQueue::Kind::gap)
        writeGap(record);
    else if (record.level <= level() || record.level == qnlog_always)
        writeLine(record.level, record.time, record.text);
}

void qnlog_handle::writeLine(std::uint32_t level, WallClock::time_point time,
                             std::string_view text) noexcept {
    try {
        if (!file_.write(composer_.compose(level, time, text)))
            return;
        composer_.confirm();
        owedBeginning_ = {};          // too late for it
    } catch (const std::bad_alloc&) { // a line without memory is lost like one without disk
    }
}

/// Whatever the handle's level, since messages of that level are missing too.
void qnlog_handle::writeGap(const LineQueue::Record& gap) noexcept {
    std::array<char, 80> text{};
    std::snprintf(text.data(), text.size(),
                  "Messages dropped here because too many were waiting: %llu",
                  static_cast<unsigned long long>(gap.dropped));
    writeLine(qnlog_warning, gap.time, text.data());
}
