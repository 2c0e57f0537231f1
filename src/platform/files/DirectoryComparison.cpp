#include "platform/files/DirectoryComparison.h"

#include "platform/files/SubpathList.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace platform {

namespace {

constexpr std::size_t chunkSize = std::size_t{1} << 16U;

/// The chunks of a pair of files. Reused, since most files need much less.
struct Chunks {
    std::array<char, chunkSize> left;
    std::array<char, chunkSize> right;
};

/// A regular file; empty if it is anything else or cannot be opened. Never waits for a pipe.
FileDescriptor openFile(const SubpathList& tree, std::size_t index, off_t& size) {
    FileDescriptor file(
        ::openat(tree.root(), tree.path(index), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    struct stat status {};
    if (file && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)))
        file.reset();
    size = status.st_size;
    return file;
}

/// Fills the chunk, unless the file ends before. -1 on failure.
ssize_t fill(const FileDescriptor& file, std::array<char, chunkSize>& chunk, std::size_t wanted) {
    std::size_t filled = 0;
    while (filled < wanted) {
        const ssize_t count = ::read(file.get(), chunk.data() + filled, wanted - filled);
        if (count == 0)
            break;
        if (count < 0 && errno != EINTR)
            return -1;
        filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
    return static_cast<ssize_t>(filled);
}

bool areEqualFiles(const FileDescriptor& left, const FileDescriptor& right, off_t size,
                   Chunks& chunks) {
    while (size > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<off_t>(size, chunkSize));
        const auto count = static_cast<ssize_t>(wanted);
        if (fill(left, chunks.left, wanted) != count || fill(right, chunks.right, wanted) != count)
            return false;
        if (std::memcmp(chunks.left.data(), chunks.right.data(), wanted) != 0)
            return false;
        size -= count;
    }
    return true;
}

bool isEqualPair(const SubpathList& left, const SubpathList& right, std::size_t index,
                 Chunks& chunks) {
    const bool isFolder = left.isFolder(index);
    if (isFolder != right.isFolder(index))
        return false;
    if (isFolder)
        return true;
    off_t leftSize = 0;
    off_t rightSize = 0;
    const FileDescriptor leftFile = openFile(left, index, leftSize);
    const FileDescriptor rightFile = openFile(right, index, rightSize);
    return leftFile && rightFile && leftSize == rightSize &&
           areEqualFiles(leftFile, rightFile, leftSize, chunks);
}

/// Compares the pairs of two lists of the same size, on several threads, since most of the time
/// goes into opening files. All stop at the first difference.
class PairComparison {
  public:
    PairComparison(const SubpathList& left, const SubpathList& right)
        : left_(left), right_(right) {}

    bool areEqual() {
        std::vector<std::jthread> helpers;
        const std::size_t count = std::min<std::size_t>(std::thread::hardware_concurrency(), 4);
        try {
            while (helpers.size() + 1 < count && helpers.size() * batch < left_.size())
                helpers.emplace_back([this] { comparePairs(); });
        } catch (const std::system_error&) {
            // Without a thread to spare the caller's does it all.
        }
        comparePairs();
        helpers.clear(); // waits for them
        return !differ_;
    }

  private:
    static constexpr std::size_t batch = 64;

    void comparePairs() {
        const auto chunks = std::make_unique_for_overwrite<Chunks>();
        for (;;) {
            const std::size_t first = next_.fetch_add(batch);
            const std::size_t end = std::min(first + batch, left_.size());
            for (std::size_t i = first; i < end; ++i) {
                if (differ_)
                    return;
                if (!isEqualPair(left_, right_, i, *chunks))
                    differ_ = true;
            }
            if (end == left_.size())
                return;
        }
    }

    const SubpathList& left_;
    const SubpathList& right_;
    std::atomic<std::size_t> next_{0};
    std::atomic<bool> differ_{false};
};

} // namespace

bool isDirectoryEqualToDirectory(const std::string& left, const std::string& right) {
    const auto leftTree = SubpathList::of(left);
    const auto rightTree = leftTree ? SubpathList::of(right) : std::nullopt;
    if (!rightTree || leftTree->size() != rightTree->size())
        return false;
    return PairComparison(*leftTree, *rightTree).areEqual();
}

} // namespace platform
