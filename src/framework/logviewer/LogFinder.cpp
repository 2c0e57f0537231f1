#include "framework/logviewer/LogFinder.h"

#include "framework/logviewer/LogLineScan.h"
#include "platform/loop/DispatchQueue.h"

#include <QByteArray>

#include <algorithm>
#include <atomic>
#include <string>
#include <string_view>

namespace QN::logviewer {

namespace {

constexpr std::size_t usualBlock = std::size_t{1} << 20U;
constexpr std::size_t longestLine = std::size_t{64} << 20U;

constexpr char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter + ('a' - 'A')) : letter;
}

bool isAscii(const QString& text) {
    return std::ranges::all_of(text, [](QChar each) { return each.unicode() < 0x80; });
}

class Needle {
  public:
    explicit Needle(const QString& text)
        : text_(text), isPlain_(isAscii(text)), bytes_(text.toUtf8().toStdString()) {
        std::ranges::transform(bytes_, bytes_.begin(), lower);
    }

    bool isIn(std::string_view text) const {
        if (isPlain_)
            return !std::ranges::search(text, bytes_, {}, lower).empty();
        return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()))
            .contains(text_, Qt::CaseInsensitive);
    }

  private:
    const QString text_;
    const bool isPlain_;
    std::string bytes_; // in lower case
};

/// What of a line is searched.
std::string_view searchedText(std::string_view line) {
    const LogLine scanned = LogLineScan::lineOf(line);
    if (scanned.kind == LogLine::Kind::message)
        return line.substr(std::min(scanned.textStart, line.size()));
    return scanned.kind == LogLine::Kind::further ? line : std::string_view();
}

} // namespace

struct LogFinder::State : std::enable_shared_from_this<State> {
    State(std::shared_ptr<const LogBytes> searched, const QString& text, Found callback)
        : file(std::move(searched)), needle(text), found(std::move(callback)) {}

    const std::shared_ptr<const LogBytes> file;
    const Needle needle;
    Found found; // main thread, like the next three
    std::uint64_t wanted = 0;
    std::uint64_t told = 0;
    bool hasBegun = false;
    std::atomic<bool> isStopped{false};
    const std::shared_ptr<platform::DispatchQueue> queue =
        platform::DispatchQueue::makeSerial("com.quarnel.logfinder");

    void search(std::uint64_t start, std::uint64_t end);
    std::size_t searchBlock(std::string_view block, std::uint64_t start,
                            std::vector<std::uint64_t>& lines) const;
    void tell(std::vector<std::uint64_t> lines, std::uint64_t end);
};

LogFinder::LogFinder(std::shared_ptr<const LogBytes> file, const QString& needle, Found found)
    : state_(std::make_shared<State>(std::move(file), needle, std::move(found))) {}

LogFinder::~LogFinder() {
    state_->isStopped = true;
    state_->found = nullptr;
}

bool LogFinder::isDone() const noexcept {
    return state_->told >= state_->wanted;
}

void LogFinder::searchTo(std::uint64_t start, std::uint64_t end) {
    const std::uint64_t from = state_->hasBegun ? state_->wanted : start;
    state_->hasBegun = true;
    if (end <= from)
        return;
    state_->wanted = end;
    state_->queue->async([state = state_, from, end] { state->search(from, end); });
}

/// In blocks, so that the first lines are told early.
void LogFinder::State::search(std::uint64_t start, std::uint64_t end) {
    std::size_t blockSize = usualBlock;
    while (start < end && !isStopped) {
        const std::string block = file->text(
            start, static_cast<std::size_t>(std::min<std::uint64_t>(blockSize, end - start)));
        std::vector<std::uint64_t> lines;
        const std::size_t searched = searchBlock(block, start, lines);
        if (searched == 0 && blockSize < longestLine && !block.empty()) {
            blockSize *= 2;
            continue;
        }
        blockSize = usualBlock;
        start = block.empty() ? end : start + (searched > 0 ? searched : block.size());
        tell(std::move(lines), start);
    }
}

/// The size of the complete lines of the block.
std::size_t LogFinder::State::searchBlock(std::string_view block, std::uint64_t start,
                                          std::vector<std::uint64_t>& lines) const {
    std::size_t place = 0;
    for (std::size_t end = 0; (end = block.find('\n', place)) != std::string_view::npos;
         place = end + 1) {
        if (needle.isIn(searchedText(block.substr(place, end - place))))
            lines.push_back(start + place);
    }
    return place;
}

void LogFinder::State::tell(std::vector<std::uint64_t> lines, std::uint64_t end) {
    platform::DispatchQueue::main()->async(
        [self = shared_from_this(), lines = std::move(lines), end] {
            self->told = end;
            if (self->found)
                self->found(lines, end);
        });
}

std::vector<LogMatch> matchesIn(const QString& text, const QString& needle) {
    std::vector<LogMatch> matches;
    if (needle.isEmpty())
        return matches;
    for (qsizetype place = 0; (place = text.indexOf(needle, place, Qt::CaseInsensitive)) >= 0;
         place += needle.size())
        matches.push_back({static_cast<int>(place), static_cast<int>(needle.size())});
    return matches;
}

} // namespace QN::logviewer
