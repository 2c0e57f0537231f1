#include "framework/log/LogPrefixes.h"

#include <unordered_map>
#include <utility>
#include <vector>

namespace QN::log::prefixes {

namespace {

struct Table {
    std::unordered_map<std::uint64_t, std::vector<std::string>> byLog;
    ~Table();
};

// Apart from the table, since a thread's last messages may come when the table is gone already.
thread_local bool isTableInUse = false;

Table::~Table() {
    isTableInUse = false;
}

auto& table() {
    thread_local Table ownTable;
    isTableInUse = true;
    return ownTable.byLog;
}

} // namespace

bool areThere(std::uint64_t log) noexcept {
    return isTableInUse && table().count(log) != 0;
}

void append(std::uint64_t log, std::string prefix) {
    table()[log].push_back(std::move(prefix));
}

void erase(std::uint64_t log) noexcept {
    if (isTableInUse)
        table().erase(log);
}

std::string prefixed(std::uint64_t log, std::string_view text) {
    std::string result;
    for (const std::string& prefix : table()[log])
        result += prefix + ' ';
    result += text;
    return result;
}

} // namespace QN::log::prefixes
