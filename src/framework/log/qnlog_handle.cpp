#include "framework/log/qnlog_handle.h"

#include "platform/SystemLog.h"

#include <utility>

using platform::WallClock;
using QN::log::LineQueue;
using QN::log::LogFile;

namespace {

constexpr std::int32_t backgroundPriority = -254;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

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
    , queue_("com.quarnel.log", true, backgroundPriority) {
    if (settings_.startsWithMark)
        queue_.enqueue([this] { file_.write(byteOrderMark); });
}

qnlog_handle::~qnlog_handle() {
    isClosing_ = true;
    if (lines_.hurry())
        hurry_.set();
    queue_.wait();
    writeAll(); // what a writer that could not be started has left
}

void qnlog_handle::append(std::uint32_t level, WallClock::time_point time,
                          std::string_view text) noexcept {
    if (!text.empty())
        append({false, level, time, text});
}

void qnlog_handle::setLevel(std::uint32_t level) noexcept {
    append({true, level, WallClock::now(), "log level changed"});
}

void qnlog_handle::append(const LineQueue::Record& record) noexcept {
    if (QN::async::queue::isOrphaned())
        return; // and the flag of the lines may be taken for ever
    // What led to an end that comes without notice should be in the file by then.
    const bool isUrgent = record.level <= qnlog_error;
    switch (lines_.append(record, isUrgent)) {
    case LineQueue::Demand::none:
        return;
    case LineQueue::Demand::start:
        startWriter();
        return;
    case LineQueue::Demand::hurry:
        hurry_.set();
        return;
    }
}

void qnlog_handle::startWriter() noexcept {
    try {
        queue_.enqueue([this] { write(); });
    } catch (...) { // out of memory: the messages wait for the next one
        lines_.writerFailed();
    }
}

void qnlog_handle::drain(std::chrono::steady_clock::time_point deadline) {
    if (lines_.hurry())
        hurry_.set();
    // Behind what the writer still has to do, and before what it may do after lingering.
    const auto isWritten = queue_.enqueueWithFuture([this] { write(); });
    isWritten.wait_until(deadline);
}

/// Begins a new task when more has come meanwhile, so that other queues get their turn.
void qnlog_handle::write() {
    writeAll();
    if (!isClosing_)
        hurry_.waitFor(lingering);
    if (!lines_.endLingering())
        startWriter();
}

void qnlog_handle::writeAll() {
    for (LineQueue::Chunks chunks = lines_.take(); !chunks.empty(); chunks = lines_.take()) {
        while (!chunks.empty()) {
            std::size_t offset = 0;
            LineQueue::Record record{};
            while (chunks.front().next(offset, record))
                write(record);
            LineQueue::Chunks written;
            written.splice(written.end(), chunks, chunks.begin());
            lines_.giveBack(std::move(written));
            reportDropped();
        }
    }
}

void qnlog_handle::write(const LineQueue::Record& record) noexcept {
    if (record.isLevelChange)
        level_.store(record.level, std::memory_order_relaxed);
    if (record.level <= level() || record.level == qnlog_always)
        writeLine(record.level, record.time, record.text);
}

void qnlog_handle::writeLine(std::uint32_t level, WallClock::time_point time,
                             std::string_view text) noexcept {
    try {
        if (file_.write(composer_.compose(level, time, text)))
            composer_.confirm();
    } catch (const std::bad_alloc&) { // a line without memory is lost like one without disk
    }
}

void qnlog_handle::reportDropped() {
    const std::uint64_t dropped = lines_.takeDropped();
    if (dropped == 0)
        return;
    platform::systemLog(platform::LogPriority::warning,
                        "%llu messages are missing in %s, which could not be written for a while",
                        static_cast<unsigned long long>(dropped), path().c_str());
}
