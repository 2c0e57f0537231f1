#include "plugin/effects/AudioServerProcess.h"

#include "platform/loop/UnixSocket.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"

#include <gmock/gmock.h>

#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;
using platform::FileDescriptor;
using support::ScopedVariable;
using testing::ElementsAre;

namespace {

/// A process with an executable of its own that sleeps, with a socket of ours or without.
class Sleeper {
  public:
    Sleeper(const fs::path& executable, const FileDescriptor* socket) {
        fs::create_directories(executable.parent_path());
        fs::copy_file("/bin/sleep", executable);
        pid_ = ::fork();
        if (pid_ == 0) {
            if (socket != nullptr)
                ::fcntl(socket->get(), F_SETFD, 0);
            ::execl(executable.c_str(), executable.c_str(), "60", nullptr);
            ::_exit(1);
        }
        EXPECT_TRUE(support::waitUntil([&] {
            std::error_code error;
            const auto link = fs::path("/proc") / std::to_string(pid_) / "exe";
            return fs::read_symlink(link, error) == executable;
        }));
    }
    ~Sleeper() {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    Sleeper(const Sleeper&) = delete;
    Sleeper& operator=(const Sleeper&) = delete;

    pid_t pid() const noexcept { return pid_; }

  private:
    pid_t pid_;
};

/// A socket that this process listens at, as a service manager does for the server.
class AudioServerProcessTest : public testing::Test {
  protected:
    AudioServerProcessTest() {
        EXPECT_TRUE(platform::bindUnixSocket(socket_.get(), path_));
        EXPECT_EQ(::listen(socket_.get(), 4), 0);
    }

    const support::PrivateFolder folder_;
    const fs::path path_ = fs::canonical(folder_.path()) / "pipewire-0";
    const FileDescriptor socket_ = platform::makeUnixSocket();
};

} // namespace

TEST_F(AudioServerProcessTest, IsTheDaemonThatHoldsTheSocketOfAServiceManager) {
    EXPECT_FALSE(findAudioServer({}));
    EXPECT_FALSE(findAudioServer({path_})) << "whoever listens is no sound server";
    const fs::path folder = path_.parent_path();
    const Sleeper otherDaemon(folder / "a" / "pipewire", nullptr);
    const Sleeper otherHolder(folder / "b" / "keeper", &socket_);
    EXPECT_FALSE(findAudioServer({path_}));
    const Sleeper daemon(folder / "c" / "pipewire", &socket_);
    const auto found = findAudioServer({folder / "absent", path_});
    ASSERT_TRUE(found);
    EXPECT_EQ(found->pid, daemon.pid());
    EXPECT_EQ(found->path, (folder / "c" / "pipewire").string());
    fs::create_directory_symlink(folder, folder / "link");
    EXPECT_TRUE(findAudioServer({folder / "link" / "pipewire-0"}));
}

TEST(AudioServerSockets, AreThoseThatClientsTry) {
    const ScopedVariable remote("PIPEWIRE_REMOTE", std::nullopt);
    const ScopedVariable session("XDG_RUNTIME_DIR", "/run/user/7");
    {
        const ScopedVariable own("PIPEWIRE_RUNTIME_DIR", std::nullopt);
        EXPECT_THAT(audioServerSockets(),
                    ElementsAre("/run/user/7/pipewire-0", "/run/pipewire/pipewire-0"));
    }
    const ScopedVariable own("PIPEWIRE_RUNTIME_DIR", "/run/mine");
    const ScopedVariable named("PIPEWIRE_REMOTE", "other");
    EXPECT_THAT(audioServerSockets(), ElementsAre("/run/mine/other", "/run/pipewire/other"));
    const ScopedVariable whole("PIPEWIRE_REMOTE", "/somewhere/socket");
    EXPECT_THAT(audioServerSockets(), ElementsAre("/somewhere/socket"));
}
