#include "platform/files/FileWatchService.h"

#include "platform/files/FileWatch.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/loop/RunLoop.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <functional>
#include <set>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

using platform::DispatchQueue;
using platform::FileDescriptor;
using platform::FileWatch;
using platform::FileWatchService;

namespace {

/// A kernel whose limits and events are the test's. Its watches are inode numbers.
class ScriptedInotify : public platform::InotifyCalls {
  public:
    ScriptedInotify() {
        int ends[2];
        EXPECT_EQ(::pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        reading_.reset(ends[0]);
        writing_.reset(ends[1]);
    }

    int init() const noexcept override {
        return instanceError != 0 ? fail(instanceError) : ::dup(reading_.get());
    }

    int addWatch(int, const char* path, std::uint32_t) const noexcept override {
        if (watchError != 0)
            return fail(watchError);
        beforeWatch();
        struct stat file {};
        ::stat(path, &file);
        watches.insert(static_cast<int>(file.st_ino));
        return static_cast<int>(file.st_ino);
    }

    void removeWatch(int, int watch) const noexcept override {
        EXPECT_EQ(watches.erase(watch), 1U);
    }

    void send(int watch, std::uint32_t mask) const {
        inotify_event event{};
        event.wd = watch;
        event.mask = mask;
        EXPECT_EQ(::write(writing_.get(), &event, sizeof event), ssize_t{sizeof event});
    }

    int instanceError = 0;
    int watchError = 0;
    std::function<void()> beforeWatch = [] {};
    mutable std::set<int> watches;

  private:
    static int fail(int error) noexcept {
        errno = error;
        return -1;
    }

    FileDescriptor reading_;
    FileDescriptor writing_;
};

class FileWatchServiceTest : public testing::Test {
  protected:
    std::string makeFile(const std::string& name) const {
        std::ofstream(folder.path() / name) << "begin";
        return folder.path() / name;
    }

    std::unique_ptr<FileWatch> watch(const std::string& path) { return watch(path, told, service); }

    std::unique_ptr<FileWatch> watch(const std::string& path, std::vector<std::uint32_t>& all,
                                     FileWatchService& by) const {
        return FileWatch::createForPath(
            path, queue, [&all](std::uint32_t events) { all.push_back(events); }, by);
    }

    /// Serves the loop until `all` has `count` entries.
    bool waitForCalls(const std::vector<std::uint32_t>& all, std::size_t count) const {
        return support::waitUntil([&] {
            std::size_t now = 0;
            queue->sync([&] { now = all.size(); });
            return now >= count;
        });
    }

    const support::PrivateFolder folder;
    const std::shared_ptr<DispatchQueue> queue = DispatchQueue::makeSerial("com.quarnel.test");
    platform::RunLoop loop;
    ScriptedInotify kernel;
    FileWatchService service{loop, kernel};
    using Told = std::vector<std::uint32_t>;
    Told told;
};

} // namespace

TEST_F(FileWatchServiceTest, RefusesWhenTheSystemHasNoInstancesOrWatchesLeftAndRecovers) {
    const support::SystemLogRecorder log;
    const std::string file = makeFile("file");
    kernel.instanceError = EMFILE;
    EXPECT_EQ(watch(file), nullptr);
    EXPECT_EQ(errno, EMFILE);
    kernel.instanceError = 0;
    kernel.watchError = ENOSPC;
    EXPECT_EQ(watch(file), nullptr);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(log.count("Couldn't watch a file"), 1U); // not one for each
    kernel.watchError = 0;
    EXPECT_NE(watch(file), nullptr);
    kernel.watchError = ENOSPC;
    EXPECT_EQ(watch(file), nullptr);
    EXPECT_EQ(log.count("Couldn't watch a file"), 2U);
}

TEST_F(FileWatchServiceTest, AKernelWatchGoesWithTheLastObserverOfItsFile) {
    const std::string file = makeFile("file");
    auto first = watch(file);
    const auto second = watch(file);
    EXPECT_EQ(kernel.watches.size(), 1U);
    first.reset();
    EXPECT_EQ(kernel.watches.size(), 1U);
    kernel.send(*kernel.watches.begin(), IN_MODIFY);
    EXPECT_TRUE(waitForCalls(told, 1));
    second->cancel();
    EXPECT_EQ(kernel.watches.size(), 0U);
}

TEST_F(FileWatchServiceTest, AnUnmountedFileIsRevokedAndItsKernelWatchLeftAlone) {
    const auto watched = watch(makeFile("file"));
    const int number = *kernel.watches.begin();
    kernel.send(number, IN_UNMOUNT);
    kernel.send(number, IN_IGNORED);
    EXPECT_TRUE(waitForCalls(told, 1));
    kernel.watches.clear(); // as the kernel has done; a removal would fail the test
    kernel.send(number, IN_MODIFY);
    loop.turn();
    queue->sync([] {});
    EXPECT_EQ(told, Told{FileWatch::revoked});
}

TEST_F(FileWatchServiceTest, AFileThatLosesItsNameWhileItsWatchStartsIsReported) {
    const std::string file = makeFile("file");
    const FileDescriptor holder(::open(file.c_str(), O_RDONLY | O_CLOEXEC)); // so that it lives on
    kernel.beforeWatch = [&] { ::unlink(file.c_str()); };
    const auto watched = watch(file);
    ASSERT_NE(watched, nullptr);
    queue->sync([] {});
    EXPECT_EQ(told, Told{FileWatch::deleted});
}

TEST_F(FileWatchServiceTest, AWatchCancelledByItsHandlerGetsNoMoreEvents) {
    std::unique_ptr<FileWatch> watched;
    watched = FileWatch::createForPath(
        makeFile("file"), queue,
        [&](std::uint32_t events) {
            told.push_back(events);
            watched->cancel();
        },
        service);
    queue->sync([&] { // so that both come together: what is lost, and that the file is destroyed
        kernel.send(-1, IN_Q_OVERFLOW);
        kernel.send(*kernel.watches.begin(), IN_DELETE_SELF);
        loop.turn();
    });
    queue->sync([] {});
    EXPECT_EQ(told, Told{FileWatch::written});
}

// With the real kernel, whose queue overflows since nobody serves the loop meanwhile.
TEST_F(FileWatchServiceTest, AfterAnOverflowEverythingMayHaveChanged) {
    const platform::InotifyCalls real;
    FileWatchService realService(loop, real);
    std::size_t limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
    ASSERT_GT(limit, 0U);
    Told untouched;
    Told removed;
    Told noise;
    const auto first = watch(makeFile("untouched"), untouched, realService);
    const auto second = watch(makeFile("removed"), removed, realService);
    const std::string noisy[] = {makeFile("noisy"), makeFile("noisier")};
    const auto third = watch(noisy[0], noise, realService);
    const auto fourth = watch(noisy[1], noise, realService);
    const FileDescriptor files[] = {FileDescriptor(::open(noisy[0].c_str(), O_WRONLY | O_CLOEXEC)),
                                    FileDescriptor(::open(noisy[1].c_str(), O_WRONLY | O_CLOEXEC))};
    for (std::size_t i = 0; i <= limit; ++i) // in turn, or the kernel would merge them
        ASSERT_EQ(::pwrite(files[i % 2].get(), "x", 1, 0), 1);
    ASSERT_EQ(::unlink((folder.path() / "removed").c_str()), 0); // is not told any more
    EXPECT_TRUE(waitForCalls(untouched, 1));
    EXPECT_TRUE(waitForCalls(removed, 2));
    EXPECT_EQ(untouched, Told{FileWatch::written});
    EXPECT_EQ(removed, (Told{FileWatch::written, FileWatch::deleted}));
}

TEST_F(FileWatchServiceTest, HandlersOfOneWatchNeverOverlapAndTheFinalCallComesAfterThem) {
    std::atomic<int> running = 0;
    std::atomic<int> calls = 0;
    std::atomic<bool> mayGoOn = false;
    std::atomic<bool> ended = false;
    const auto watched = FileWatch::createForPath(
        makeFile("file"), DispatchQueue::global(),
        [&](std::uint32_t) {
            EXPECT_EQ(++running, 1);
            ++calls;
            mayGoOn.wait(false);
            --running;
        },
        service);
    for (int i = 0; i < 3; ++i) {
        kernel.send(*kernel.watches.begin(), IN_MODIFY);
        loop.turn();
    }
    EXPECT_TRUE(support::waitUntil([&] { return calls == 1; }));
    watched->cancel([&] {
        EXPECT_EQ(running, 0);
        ended = true;
    });
    EXPECT_FALSE(ended);
    mayGoOn = true;
    mayGoOn.notify_all();
    EXPECT_TRUE(support::waitUntil([&] { return ended.load(); }));
    EXPECT_EQ(calls, 1); // the writes that waited are not told any more
}
