#include "framework/logviewer/LogDocument.h"

#include "platform/text/Format.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace QN::logviewer {

namespace {

constexpr std::size_t mostShownBytes = std::size_t{32} << 10U;
constexpr std::uint32_t secondsPerMinute = 60;
constexpr std::uint32_t secondsPerHour = 3600;

/// The tag of a level with its blank, as the log writes it.
QString tagOf(std::uint32_t level) {
    constexpr std::array<const char*, 17> tags{"[C] ", "[E] ", "[W] ", "[I] ", "[U] ", "",
                                               "",     "",     "",     "",     "[V] ", "",
                                               "",     "",     "",     "[D] ", "[T] "};
    return QString::fromLatin1(level < tags.size() ? tags[level] : "");
}

auto dayOf(const LogHour& hour) {
    return std::tie(hour.year, hour.month, hour.day);
}

} // namespace

void LogDocument::open(std::shared_ptr<const LogBytes> file) {
    *this = {};
    file_ = std::move(file);
}

LogDocument::Change LogDocument::take(std::vector<LogDelivery> deliveries) {
    Change change;
    for (LogDelivery& delivery : deliveries)
        takeOne(delivery, change);
    return change;
}

/// The head of a long file, which comes before its tail, is not shown.
void LogDocument::takeOne(LogDelivery& delivery, Change& change) {
    state_ = delivery.state;
    switch (delivery.kind) {
    case LogDelivery::Kind::cut:
        index_ = {};
        tail_.reset();
        hasBeenCut_ = true;
        isCaughtUp_ = false;
        change = {.isReset = true, .hasGrown = true};
        return;
    case LogDelivery::Kind::tail:
        tail_ = std::make_unique<LogIndex>();
        tail_->append(delivery.piece);
        change = {.isReset = true, .hasGrown = true};
        return;
    case LogDelivery::Kind::part:
        index_.append(delivery.piece);
        change.hasGrown = change.hasGrown || !tail_;
        break;
    }
    isCaughtUp_ = isCaughtUp_ || delivery.isCaughtUp;
    if (delivery.isCaughtUp && tail_)
        replaceTail(change);
}

void LogDocument::replaceTail(Change& change) {
    const std::uint64_t start = tail_->size() > 0 ? (*tail_)[0].start() : tail_->end();
    tail_.reset();
    change.rowsBefore += index_.rowsBefore(start);
}

std::size_t LogDocument::sizeOf(std::size_t row) const noexcept {
    const LogIndex& rows = index();
    return static_cast<std::size_t>(rows.endOf(row) - rows[row].start());
}

std::size_t LogDocument::shownSize(std::size_t row) const noexcept {
    return std::min(sizeOf(row), mostShownBytes);
}

LogRecord LogDocument::record(std::size_t row, std::size_t mostBytes) const {
    const std::size_t size = std::min(sizeOf(row), mostBytes);
    return readRecord(file_->text(index()[row].start(), size), index().hourOf(row));
}

QNLogEntry LogDocument::entry(std::size_t row) const {
    return QNLogEntry(record(row, mostShownBytes), sizeOf(row) - shownSize(row));
}

QString LogDocument::copyText(std::size_t row) const {
    const LogRecord read = record(row, sizeOf(row));
    const LogHour& hour = index().hourOf(row);
    return platform::formatted(QStringLiteral("%d-%02d-%02d %02d:%02d:%02d.%03d %@%@\n"), hour.year,
                               hour.month, hour.day, hour.hour, read.minute, read.second,
                               read.milliseconds, tagOf(read.level),
                               QString::fromStdString(read.text));
}

std::optional<std::size_t> LogDocument::rowAtTime(const Moment& moment, std::size_t from) const {
    const LogIndex& rows = index();
    if (rows.size() == 0)
        return std::nullopt;
    const LogHour day = moment.day.value_or(rows.hourOf(std::min(from, rows.size() - 1)));
    const auto secondOf = [&](std::size_t row) {
        const LogRecord read = record(row, mostShownBytes);
        return rows.hourOf(row).hour * secondsPerHour + read.minute * secondsPerMinute +
               read.second;
    };
    const std::vector<LogHourStart>& hours = rows.hours();
    for (std::size_t i = 0; i < hours.size(); ++i) {
        std::size_t first = hours[i].row;
        const std::size_t end = i + 1 < hours.size() ? hours[i + 1].row : rows.size();
        if (dayOf(hours[i].hour) < dayOf(day) || first == end)
            continue;
        if (dayOf(hours[i].hour) > dayOf(day))
            return first;
        if (secondOf(end - 1) < moment.secondOfDay)
            continue;
        for (std::size_t count = end - first; count > 0;) {
            const std::size_t half = count / 2;
            const bool isBefore = secondOf(first + half) < moment.secondOfDay;
            first += isBefore ? half + 1 : 0;
            count = isBefore ? count - half - 1 : half;
        }
        return first;
    }
    return std::nullopt;
}

} // namespace QN::logviewer
