#include "platform/processes/MemoryCounters.h"

#include <fstream>
#include <initializer_list>
#include <map>
#include <sstream>
#include <unistd.h>

namespace platform {

namespace {

/// The numbers of a file with lines "key: number" or "key number".
class Counters {
  public:
    explicit Counters(const std::string& file) {
        std::ifstream stream(file);
        for (std::string line; std::getline(stream, line);) {
            std::istringstream words(line);
            std::string key;
            std::uint64_t number = 0;
            if (!(words >> key >> number))
                continue;
            if (key.back() == ':')
                key.pop_back();
            numbers_.emplace(key, number);
        }
    }

    std::uint64_t sum(std::initializer_list<const char*> keys) const {
        std::uint64_t sum = 0;
        for (const char* const key : keys) {
            const auto found = numbers_.find(key);
            sum += found != numbers_.end() ? found->second : 0;
        }
        return sum;
    }

  private:
    std::map<std::string, std::uint64_t, std::less<>> numbers_;
};

} // namespace

std::vector<std::pair<std::string, std::uint64_t>> memoryCounters(const std::string& root) {
    constexpr std::uint64_t kilobyte = 1024;
    const auto pageSize = static_cast<std::uint64_t>(::sysconf(_SC_PAGESIZE));
    const Counters sizes(root + "/proc/meminfo"); // in KiB
    const Counters events(root + "/proc/vmstat");
    const auto pages = [&](std::initializer_list<const char*> keys) {
        return sizes.sum(keys) * kilobyte / pageSize;
    };
    const auto swap = sizes.sum({"SwapTotal"});
    const auto swapFree = std::min(swap, sizes.sum({"SwapFree"}));
    return {
        {"pagesz", pageSize},
        {"free", pages({"MemFree"})},
        {"active", pages({"Active"})},
        {"inactive", pages({"Inactive"})},
        {"wired", pages({"Unevictable", "SUnreclaim", "KernelStack", "PageTables"})},
        {"zero-fill",
         events.sum({"pgalloc_normal", "pgalloc_dma32", "pgalloc_dma", "pgalloc_movable"})},
        {"reactivated", events.sum({"pgactivate"})},
        {"pagein", events.sum({"pgpgin"}) * kilobyte / pageSize},
        {"pageout", events.sum({"pgpgout"}) * kilobyte / pageSize},
        {"faults", events.sum({"pgfault"})},
        {"cow-faults", 0},
        {"cache-look", 0},
        {"cache-hit", 0},
        {"purged", events.sum({"pglazyfreed"})},
        {"purgeable", pages({"SReclaimable"})},
        {"speculative", 0},
        {"decompressed", events.sum({"zswpin"})},
        {"compressed", events.sum({"zswpout"})},
        {"swapin", events.sum({"pswpin"})},
        {"swapout", events.sum({"pswpout"})},
        {"c-store-compressed", pages({"Zswap"})},
        {"c-store-uncompressed", pages({"Zswapped"})},
        {"throttled", events.sum({"allocstall_normal", "allocstall_movable"})},
        {"file-backed", pages({"Cached"})},
        {"anonymous", pages({"AnonPages"})},
        {"vm-total", swap * kilobyte},
        {"vm-used", (swap - swapFree) * kilobyte},
        {"vm-pagesz", pageSize},
        {"vm-encrypt", 0},
    };
}

} // namespace platform
