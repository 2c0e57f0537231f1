#include "framework/logviewer/LogIndex.h"
#include "framework/logviewer/LogParser.h"
#include "framework/logviewer/LogRecord.h"

#include <algorithm>
#include <cstdlib>

using namespace QN::logviewer;

// Any bytes are a log. The first byte says how long the parts are in which the rest comes: they
// must hold what the whole does, and each row must be a message that lies within the text.
namespace {

void require(bool condition) {
    if (!condition)
        std::abort();
}

LogIndex indexOf(std::string_view text, std::size_t partSize) {
    LogParser parser;
    LogIndex index;
    do {
        LogPiece piece;
        parser.parse(text.substr(0, partSize), piece);
        index.append(piece);
        text.remove_prefix(std::min(partSize, text.size()));
    } while (!text.empty());
    return index;
}

void requireSame(const LogIndex& parts, const LogIndex& whole, std::size_t row) {
    require(parts[row].start() == whole[row].start());
    require(parts[row].level() == whole[row].level());
    require(parts[row].lines() == whole[row].lines());
    require(parts.hourOf(row) == whole.hourOf(row));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const LogIndex parts = indexOf(text, std::size_t{data[0]} + 1);
    const LogIndex whole = indexOf(text, text.size() + 1);
    require(parts.size() == whole.size() && parts.droppedLines() == whole.droppedLines());
    require(parts.hasStopped() == whole.hasStopped());
    for (std::size_t row = 0; row < whole.size(); ++row) {
        requireSame(parts, whole, row);
        const std::uint64_t start = whole[row].start();
        const std::uint64_t end = whole.endOf(row);
        require(start < end && end <= text.size());
        require(whole.rowAt(start) == row && whole.rowAt(end - 1) == row);
        const LogRecord record = readRecord(text.substr(start, end - start), whole.hourOf(row));
        const auto lines = std::ranges::count(record.text, '\n') + 1;
        require(record.level == whole[row].level() && record.text.size() <= end - start);
        require(whole[row].lines() ==
                std::min<std::uint64_t>(static_cast<std::uint64_t>(lines), LogRow::mostLines));
    }
    return 0;
}
