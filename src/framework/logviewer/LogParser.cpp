#include "framework/logviewer/LogParser.h"

namespace QN::logviewer {

LogParser::LogParser(std::uint64_t start, const LogHour& hour)
    : position_(start), lineStart_(start), hour_(hour), hasHour_(true) {}

void LogParser::restart(std::uint64_t start) noexcept {
    scan_ = {};
    position_ = start;
    lineStart_ = start;
    rows_ = 0;
    isHourTold_ = false;
    hasStopped_ = false;
}

void LogParser::parse(std::string_view part, LogPiece& piece) {
    while (!part.empty() && !hasStopped_) {
        const std::size_t lineFeed = part.find('\n');
        const std::string_view line = part.substr(0, lineFeed);
        scan_.take(line);
        position_ += line.size();
        part.remove_prefix(line.size());
        if (part.empty())
            break;
        ++position_;
        part.remove_prefix(1);
        endLine(piece);
        lineStart_ = position_;
    }
    piece.end = lineStart_;
    piece.hasStopped = hasStopped_;
}

void LogParser::endLine(LogPiece& piece) {
    const LogLine line = scan_.finish();
    switch (line.kind) {
    case LogLine::Kind::message:
        addMessage(line, piece);
        break;
    case LogLine::Kind::date:
        hour_ = line.hour;
        hasHour_ = true;
        isHourTold_ = false;
        break;
    case LogLine::Kind::further:
        addFurther(piece);
        break;
    case LogLine::Kind::unknown:
        hasStopped_ = !hasHour_;
        break;
    case LogLine::Kind::notUtf8:
        ++piece.droppedLines;
        break;
    }
}

void LogParser::addMessage(const LogLine& line, LogPiece& piece) {
    hasStopped_ = !hasHour_ || lineStart_ > LogRow::mostBytes;
    if (hasStopped_)
        return;
    if (!isHourTold_)
        piece.hours.push_back({rows_, hour_});
    isHourTold_ = true;
    piece.rows.emplace_back(lineStart_, line.level);
    ++rows_;
}

void LogParser::addFurther(LogPiece& piece) noexcept {
    if (rows_ == 0)
        hasStopped_ = true;
    else if (piece.rows.empty())
        ++piece.furtherLines;
    else
        piece.rows.back().addLines(1);
}

} // namespace QN::logviewer
