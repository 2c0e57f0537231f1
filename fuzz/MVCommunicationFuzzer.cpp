#include "comm/MVCommLogText.h"
#include "comm/MVCommunication.h"
#include "platform/base/MonotonicClock.h"
#include "platform/base/SystemLog.h"
#include "platform/loop/RunLoop.h"
#include "platform/loop/UnixSocket.h"

#include <QString>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <poll.h>
#include <string>
#include <sys/socket.h>

// The server as a whole, on a real socket with two plug-ins. An input is a list of steps, each a
// byte and what it needs: bits 0 and 1 say what is done, bit 2 by which plug-in, and bit 3 that the
// server is not served before the next step.
//
//   0  write: a length of 16 bits, then the bytes
//   1  let time pass: a byte, times 4 ms
//   2  close and connect again
//   3  close the sending half

namespace {

using platform::FileDescriptor;
using platform::MonotonicClock;

constexpr int mostSteps = 200; // so that no input takes long

void require(bool condition) {
    if (!condition)
        std::abort();
}

class Clock : public MonotonicClock::Source {
  public:
    MonotonicClock::time_point now() const noexcept override { return time; }
    MonotonicClock::time_point time{std::chrono::hours(1)};
};

/// Knows every line that the server may write.
class Log : private platform::SystemLogSink {
  public:
    ~Log() override { end(); }

  private:
    void line(platform::LogPriority, std::string_view text) noexcept override {
        constexpr std::array<std::string_view, 5> beginnings{
            "'",
            "handleSocketData: Message too short (",
            "handleSocketData: Invalid data len (",
            "handleSocketData: Unknown messageID 0x",
            "handleSocketData: Duplicate checkin for ",
        };
        require(std::ranges::any_of(beginnings, [text](std::string_view beginning) {
            return text.starts_with(beginning);
        }));
        // A line feed that nobody escaped would be a question mark by now; see checkRecords().
        for (const std::string_view separator : {"\u2028", "\u2029", "\u202e", "\u2066"})
            require(text.find(separator) == std::string_view::npos);
    }
};

class Folder {
  public:
    Folder() {
        std::string path = std::filesystem::temp_directory_path() / "tonvale-fuzz-XXXXXX";
        require(::mkdtemp(path.data()) != nullptr);
        path_ = path;
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string socket() const { return path_ / "socket"; }

  private:
    std::filesystem::path path_;
};

class Application : private MVCommCallbacks {
  public:
    explicit Application(std::string path)
        : path_(std::move(path))
        , server_(MVCommunication::create(*this, QString::fromStdString(path_))) {
        require(server_ != nullptr);
    }

    FileDescriptor connect() {
        FileDescriptor plugin = platform::connectUnixSocket(path_);
        require(bool(plugin));
        loop_.turn();
        return plugin;
    }

    void turn() { loop_.turn(); }

    /// Serves all that has been sent.
    void finish() {
        pollfd events{loop_.descriptor(), POLLIN, 0};
        while (::poll(&events, 1, 0) > 0)
            loop_.turn();
    }

    void passTime(MonotonicClock::duration time) {
        clock_.time += time;
        loop_.turn();
    }

    void checkRecords(std::size_t most) const {
        const auto processes = server_->connectionProcesses();
        require(static_cast<std::size_t>(processes.size()) <= most);
        for (const MVCommConnectionProcess& process : processes) {
            require(process.name.isNull() || !process.name.isEmpty());
            require(process.name.isNull() == process.path.isNull());
            require(process.name.size() <= qsizetype{sizeof(MVCommCheckinMessage)});
            require(!MVCommLogText(process.name).contains(QLatin1Char('\n')));
        }
    }

  private:
    MVCommDataCallback dataCallback() const override {
        return [](const MVCommActivityMessage* message) {
            require(message->messageID == kMVCommActivity);
        };
    }
    MVCommCallback connectionCallback() const override {
        return [] {};
    }
    MVCommCallback disconnectionCallback() const override {
        return [] {};
    }

    struct OnClock {
        explicit OnClock(const Clock& clock) { MonotonicClock::replaceSource(&clock); }
    };

    Clock clock_;
    const OnClock onClock_{clock_};
    const Log log_;
    const std::string path_;
    platform::RunLoop loop_;
    const std::shared_ptr<MVCommunication> server_;
};

Application& application() {
    static const Folder folder;
    // Never destroyed, as in the program itself.
    static Application* const only = new Application(folder.socket());
    return *only;
}

/// What is left of an input; 0 where nothing is.
class Input {
  public:
    Input(const std::uint8_t* data, std::size_t size) : rest_(data, size) {}

    bool isEmpty() const { return rest_.empty(); }
    std::size_t byte() { return isEmpty() ? 0 : take(1)[0]; }
    std::span<const std::uint8_t> take(std::size_t size) {
        const auto taken = rest_.first(std::min(size, rest_.size()));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }

  private:
    std::span<const std::uint8_t> rest_;
};

void write(const FileDescriptor& plugin, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(plugin.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0)
            return; // full, or closed
        bytes = bytes.subspan(static_cast<std::size_t>(sent));
    }
}

void perform(std::size_t step, FileDescriptor& plugin, Input& input) {
    switch (step & 3U) {
    case 0: {
        const std::size_t low = input.byte();
        write(plugin, input.take(low + (input.byte() << 8U)));
        break;
    }
    case 1:
        application().passTime(std::chrono::milliseconds(4 * input.byte()));
        break;
    case 2:
        plugin.reset();
        application().turn();
        plugin = application().connect();
        break;
    default:
        ::shutdown(plugin.get(), SHUT_WR);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    std::array<FileDescriptor, 2> plugins{application().connect(), application().connect()};
    for (int left = mostSteps; left > 0 && !input.isEmpty(); --left) {
        const std::size_t step = input.byte();
        perform(step, plugins[(step >> 2U) & 1U], input);
        if ((step & 8U) == 0)
            application().turn();
    }
    application().finish();
    application().checkRecords(plugins.size());
    for (FileDescriptor& plugin : plugins)
        plugin.reset();
    application().finish();
    application().passTime(std::chrono::seconds(1));
    application().finish();
    application().checkRecords(0);
    return 0;
}
