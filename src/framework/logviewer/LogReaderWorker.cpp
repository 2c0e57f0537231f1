#include "framework/logviewer/LogReaderWorker.h"

#include "framework/logviewer/LogTail.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace QN::logviewer {

namespace {

constexpr std::size_t blockSize = std::size_t{1} << 20U;
constexpr std::uint64_t worthTail = std::uint64_t{4} << 20U; // smaller files are read as fast
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t beginningSize = 64;
constexpr double burst = 0.02; // seconds
constexpr std::chrono::milliseconds headStart{20};
constexpr std::chrono::seconds pollInterval{1};

} // namespace

LogReader::Worker::Worker(std::shared_ptr<const LogBytes> file, std::string path, Handler handler)
    : file_(std::move(file))
    , path_(std::move(path))
    , queue_(platform::DispatchQueue::makeSerial("com.quarnel.logreader"))
    , handler_(std::move(handler)) {}

void LogReader::Worker::start() {
    watch();
    queue_->async([self = shared_from_this()] { self->begin(); });
}

void LogReader::Worker::stop() {
    isStopped_ = true;
    handler_ = nullptr;
    QNItemContentChangeMonitor::removeObserver(observer_);
    queue_->async([self = shared_from_this()] {
        self->soon_.reset();
        self->poll_.reset();
    });
}

/// The file is watched before it is read, so that nothing is missed.
void LogReader::Worker::watch() {
    const auto changed = [weak = weak_from_this()](const WatchedItem&,
                                                   QNItemContentChangeKind kind) {
        const auto self = weak.lock();
        if (!self || self->isStopped_)
            return;
        if (kind == QNItemNotMonitored)
            self->pollLater();
        self->readOn();
    };
    observer_ = QNItemContentChangeMonitor::addObserverForFileDescriptor(file_->descriptor(),
                                                                         queue_, changed);
    observer_->setContentChangeCoalesceInterval(burst);
}

void LogReader::Worker::pollLater() {
    if (!poll_) {
        poll_.emplace(queue_, [weak = weak_from_this()] {
            if (const auto self = weak.lock(); self && !self->isStopped_) {
                self->readOn();
                self->pollLater();
            }
        });
    }
    poll_->start(platform::MonotonicClock::now() + pollInterval);
}

void LogReader::Worker::begin() {
    if (file_->size() >= worthTail && readTailFirst())
        readOnSoon();
    else
        readOn();
}

/// Whether there is something that can be shown before the file has been read.
bool LogReader::Worker::readTailFirst() {
    std::string buffer(blockSize, '\0');
    if (skipBeginning())
        readBlock(buffer);
    if (!parser_.hasRows() || parser_.hasStopped())
        return false;
    auto tail = readTail(*file_, parser_.position(), file_->size());
    if (!tail)
        return false;
    deliver({.kind = LogDelivery::Kind::tail, .piece = std::move(*tail), .state = state_});
    return true;
}

/// The display and the window, which show the tail, need the processors first.
void LogReader::Worker::readOnSoon() {
    soon_.emplace(queue_, [weak = weak_from_this()] {
        if (const auto self = weak.lock())
            self->readOn();
    });
    soon_->start(platform::MonotonicClock::now() + headStart);
}

bool LogReader::Worker::isCut() const {
    return file_->size() < parser_.position() || file_->text(0, beginning_.size()) != beginning_;
}

void LogReader::Worker::rememberBeginning() {
    if (beginning_.size() < beginningSize) {
        const auto size = std::min<std::uint64_t>(parser_.position(), beginningSize);
        beginning_ = file_->text(0, static_cast<std::size_t>(size));
    }
}

/// False if the first line has not begun yet.
bool LogReader::Worker::skipBeginning() {
    if (!isAtBeginning_)
        return true;
    std::uint64_t start = parser_.position();
    const std::string head = file_->text(0, byteOrderMark.size());
    if (start == 0 && head.size() < byteOrderMark.size())
        return false;
    if (start == 0 && head == byteOrderMark)
        start = byteOrderMark.size();
    std::size_t zeros = 0;
    while (hasBeenCut_) {
        start = file_->dataAfter(start);
        const std::string block = file_->text(start, blockSize);
        zeros = std::min(block.find_first_not_of('\0'), block.size());
        start += zeros;
        if (zeros < block.size() || block.empty())
            break;
    }
    parser_.restart(start);
    isAtBeginning_ = start >= file_->size();
    return !isAtBeginning_;
}

LogFileState LogReader::Worker::stateOfFile() const {
    if (file_->isDeleted())
        return LogFileState::deleted;
    return file_->isAt(path_) ? LogFileState::present : LogFileState::moved;
}

void LogReader::Worker::beginAnew() {
    parser_.restart(0);
    isAtBeginning_ = true;
    hasBeenCut_ = true;
    beginning_.clear();
    deliver({.kind = LogDelivery::Kind::cut, .state = state_});
}

/// Reads what is there and tells what has happened to the file.
void LogReader::Worker::readOn() {
    if (isStopped_)
        return;
    state_ = stateOfFile();
    if (isCut())
        beginAnew();
    if (skipBeginning()) {
        std::string buffer(blockSize, '\0');
        while (!isStopped_ && !parser_.hasStopped() && parser_.position() < file_->size()) {
            const std::uint64_t position = parser_.position();
            readBlock(buffer);
            if (parser_.position() == position)
                break; // it cannot be read, or has just been cut
        }
    }
    LogPiece nothing;
    nothing.end = parser_.lineStart();
    nothing.hasStopped = parser_.hasStopped();
    deliver({.piece = std::move(nothing), .isCaughtUp = true, .state = state_});
}

void LogReader::Worker::readBlock(std::string& buffer) {
    const std::size_t size = file_->read(parser_.position(), buffer);
    LogPiece piece;
    parser_.parse(std::string_view(buffer).substr(0, size), piece);
    rememberBeginning();
    deliver({.piece = std::move(piece), .state = state_});
}

/// One call waits at most.
void LogReader::Worker::deliver(LogDelivery delivery) {
    bool isFirst = false;
    {
        const platform::ScopedLock lock(mutex_);
        isFirst = waiting_.empty();
        waiting_.push_back(std::move(delivery));
    }
    if (isFirst)
        platform::DispatchQueue::main()->async(
            [self = shared_from_this()] { self->deliverWaiting(); });
}

void LogReader::Worker::deliverWaiting() {
    std::vector<LogDelivery> deliveries;
    {
        const platform::ScopedLock lock(mutex_);
        deliveries = std::exchange(waiting_, {});
    }
    if (handler_ && !isStopped_)
        handler_(std::move(deliveries));
}

} // namespace QN::logviewer
