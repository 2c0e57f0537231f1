#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace platform {

/// The kernel's counters of memory under portable names, in a fixed order. Those in pages count
/// pages of "pagesz" bytes. A counter that the kernel does not have is 0. Any thread.
///
///     pagesz                the size of a page in bytes
///     free                  MemFree
///     active, inactive      Active, Inactive
///     wired                 Unevictable + SUnreclaim + KernelStack + PageTables
///     zero-fill             pgalloc_normal + pgalloc_dma32 + pgalloc_dma + pgalloc_movable
///     reactivated           pgactivate
///     pagein, pageout       pgpgin, pgpgout, which the kernel counts in KiB
///     faults                pgfault
///     cow-faults            none
///     cache-look, cache-hit none
///     purged                pglazyfreed
///     purgeable             SReclaimable
///     speculative           none
///     decompressed          zswpin
///     compressed            zswpout
///     swapin, swapout       pswpin, pswpout
///     c-store-compressed    Zswap
///     c-store-uncompressed  Zswapped
///     throttled             allocstall_normal + allocstall_movable
///     file-backed           Cached
///     anonymous             AnonPages
///     vm-total, vm-used     SwapTotal, and that less SwapFree, in bytes
///     vm-pagesz             the size of a page of swap in bytes
///     vm-encrypt            none
///
/// `root` is the folder that holds /proc, for a machine other than this one.
std::vector<std::pair<std::string, std::uint64_t>> memoryCounters(const std::string& root = {});

} // namespace platform
