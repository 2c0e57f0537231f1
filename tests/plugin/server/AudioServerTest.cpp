#include "plugin/server/AudioServer.h"

#include "platform/loop/RunLoop.h"
#include "platform/loop/UnixSocket.h"
#include "support/ManualClock.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <sys/socket.h>

using platform::FileDescriptor;

namespace {

/// A sound server that takes connections and serves none.
class AudioServerTest : public testing::Test, protected AudioServer::Listener {
  protected:
    void SetUp() override {
        ASSERT_TRUE(platform::bindUnixSocket(socket_.get(), folder_.path() / "pipewire-0"));
        ASSERT_EQ(::listen(socket_.get(), 16), 0);
    }

    void serverConnected() override { ++connections_; }
    void serverLost() override { ++losses_; }
    void globalAdded(const AudioGlobal& /*global*/) override {}
    void globalRemoved(std::uint32_t /*id*/) override {}

    bool endConnection() {
        FileDescriptor(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC)).reset();
        return support::waitUntil([&] { return losses_ == connections_; });
    }
    void advance(std::chrono::milliseconds time) {
        clock_.advance(time);
        loop_.turn();
    }

    support::ManualClock clock_;
    support::SystemLogRecorder log_;
    const support::PrivateFolder folder_;
    const support::ScopedVariable variable_{"PIPEWIRE_RUNTIME_DIR", folder_.path().string()};
    const FileDescriptor socket_ = platform::makeUnixSocket();
    platform::RunLoop loop_;
    int connections_ = 0;
    int losses_ = 0;
};

} // namespace

TEST_F(AudioServerTest, PausesGrowAlsoWhenTheServerTakesConnectionsAndServesNone) {
    using namespace std::chrono_literals;
    AudioServer server(loop_, *this);
    server.start();
    advance({});
    int connections = 1;
    for (const std::chrono::milliseconds pause : {250ms, 500ms, 1000ms, 2000ms}) {
        ASSERT_EQ(connections_, connections);
        ASSERT_TRUE(endConnection());
        advance(pause - 1ms);
        EXPECT_EQ(connections_, connections) << pause.count();
        advance(1ms);
        EXPECT_EQ(connections_, ++connections);
    }
}
