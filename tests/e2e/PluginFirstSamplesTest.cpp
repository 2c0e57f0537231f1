#include "e2e/PlayerFixture.h"
#include "e2e/Sandbox.h"

#include "platform/base/FileDescriptor.h"
#include "support/PrivateFolder.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <span>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

using platform::FileDescriptor;
using support::ChildProcess;
using support::PrivateAudioSession;

namespace {

constexpr int rounds = 10;
constexpr int mostRounds = 60; // with those in which the machine had no time for the sound
constexpr std::chrono::milliseconds littleWait{2};
constexpr std::size_t enough = 4800;               // samples of a stream to judge it by
constexpr std::chrono::milliseconds duration{250}; // of a stream
constexpr std::size_t streamSamples = std::size_t{2} * 48 * duration.count(); // of both channels

/// A program that begins a new stream of constant samples each time that it is told to.
class AnyPlayer {
  public:
    virtual ~AnyPlayer() = default;
    virtual void play() = 0;
    virtual pid_t pid() const = 0;

    /// Starts the program again, as another process, if it does not come to the end of its stream.
    virtual bool restartIfStuck() { return false; }
};

/// One that plays on a signal.
class SignalledPlayer : public AnyPlayer {
  public:
    explicit SignalledPlayer(const std::vector<std::string>& command) : process_(command) {
        EXPECT_TRUE(waitUntil([this] { return process_.outputSize() > 0; }));
    }
    void play() override { process_.signal(SIGUSR1); }
    pid_t pid() const override { return process_.pid(); }

  private:
    ChildProcess process_;
};

/// aplay, which makes a new stream for each of its files: here pipes, which it waits for.
class AlsaPlayer : public AnyPlayer {
  public:
    explicit AlsaPlayer(const std::string& device)
        : command_{"aplay", "-q",     "-D", device, "-t", "raw",
                   "-f",    "S16_LE", "-c", "2",    "-r", "48000"} {
        for (int i = 0; i < mostRounds + 20; ++i) {
            pipes_.push_back(folder_.path() / std::to_string(i));
            EXPECT_EQ(::mkfifo(pipes_.back().c_str(), 0600), 0);
        }
        start();
    }
    ~AlsaPlayer() override { process_->stop(SIGKILL); } // it waits for the next of its pipes

    /// PipeWire's plug-in for ALSA waits for ever at the end of one stream in several hundred, also
    /// where nobody else has to do with it (seen with PipeWire 0.3.65).
    bool restartIfStuck() override {
        if (opensNext())
            return false;
        process_->stop(SIGKILL);
        start();
        return true;
    }

    void play() override {
        EXPECT_TRUE(opensNext());
        const FileDescriptor pipe = std::exchange(next_, FileDescriptor());
        ++played_;
        const std::vector<std::int16_t> samples(streamSamples,
                                                static_cast<std::int16_t>(level * 32768));
        const auto bytes = std::as_bytes(std::span(samples));
        // All at once, so that closing it is the end of the stream.
        EXPECT_GE(::fcntl(pipe.get(), F_SETPIPE_SZ, bytes.size()), 0);
        EXPECT_EQ(::write(pipe.get(), bytes.data(), bytes.size()),
                  static_cast<ssize_t>(bytes.size()));
    }
    pid_t pid() const override { return process_->pid(); }

  private:
    void start() {
        auto command = command_;
        command.insert(command.end(), pipes_.begin() + played_, pipes_.end());
        process_ = std::make_unique<ChildProcess>(command);
    }

    /// Whether the program has come to the next pipe.
    bool opensNext() {
        return waitUntil([&] {
            if (!next_)
                next_.reset(::open(pipes_.at(std::size_t(played_)).c_str(),
                                   O_WRONLY | O_NONBLOCK | O_CLOEXEC));
            return static_cast<bool>(next_);
        });
    }

    const std::vector<std::string> command_;
    const support::PrivateFolder folder_;
    std::vector<std::string> pipes_;
    std::ptrdiff_t played_ = 0;
    FileDescriptor next_;
    std::unique_ptr<ChildProcess> process_;
};

/// How long the threads of a process that are there have waited for a processor.
std::chrono::nanoseconds waitForProcessor(pid_t process) {
    std::chrono::nanoseconds sum{0};
    const std::filesystem::path threads = "/proc/" + std::to_string(process) + "/task";
    for (const auto& thread : std::filesystem::directory_iterator(threads)) {
        std::ifstream statistics(thread.path() / "schedstat");
        std::uint64_t ran = 0;
        std::uint64_t waited = 0;
        statistics >> ran >> waited;
        sum += std::chrono::nanoseconds(waited);
    }
    return sum;
}

std::vector<std::string> paplay(const std::string& file) {
    return {"paplay", "--raw", "--format=float32le", "--rate=48000", "--channels=2", file};
}

/// A sandboxed application, of which one process goes on while each sound is one of its own.
class SandboxedPlayer : public AnyPlayer {
  public:
    SandboxedPlayer() {
        const std::vector<float> samples(streamSamples, level);
        std::ofstream(sound_, std::ios::binary)
            .write(reinterpret_cast<const char*>(samples.data()),
                   static_cast<std::streamsize>(samples.size() * sizeof(float)));
        start("/dev/zero");
        EXPECT_TRUE(waitUntil([this] { return pid() != 0; }));
    }
    ~SandboxedPlayer() override {
        for (const auto& process : processes_)
            process->stop(SIGKILL);
    }

    void play() override { start(sound_); }
    pid_t pid() const override { return childOf(processes_.front()->pid()); }

  private:
    void start(const std::string& file) {
        roots_.push_back(std::make_unique<support::PrivateFolder>());
        processes_.push_back(std::make_unique<ChildProcess>(
            asFlatpak("org.example.Fox", roots_.back()->path(), paplay(file))));
    }

    const support::PrivateFolder folder_;
    const std::string sound_ = folder_.path() / "sound";
    std::vector<std::unique_ptr<support::PrivateFolder>> roots_;
    std::vector<std::unique_ptr<ChildProcess>> processes_;
};

/// A silent program of a kind.
struct SilentProgram {
    std::vector<std::string> command;

    /// What makes another program of it, although it calls itself as all of the kind do.
    enum class As { itself, copy, flatpak };
    As as;
};

/// A kind of programs: how one of it is started, and a silent one of the same kind. What is set for
/// that one, the session manager restores to others of the kind.
struct Kind {
    const char* name;
    std::function<std::unique_ptr<AnyPlayer>()> make;
    SilentProgram silent;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
    *stream << kind.name;
}

std::unique_ptr<AnyPlayer> signalled(const std::vector<std::string>& command) {
    return std::make_unique<SignalledPlayer>(command);
}

constexpr const char* sandboxed = "paplay_in_sandbox";
const std::string milliseconds = std::to_string(duration.count());
const std::string loud = std::to_string(level);

SilentProgram silentAplay(const char* device) {
    return {{"aplay", "-q", "-D", device, "-f", "S16_LE", "-c", "2", "-r", "48000", "/dev/zero"},
            SilentProgram::As::flatpak};
}

const std::array<Kind, 5> kinds{
    {{"native",
      [] {
          return signalled({STREAM_PLAYER, "1", milliseconds, loud});
      },
      {{STREAM_PLAYER, "1", "0", "0"}, SilentProgram::As::copy}},
     {"pulse",
      [] {
          return signalled({PULSE_PLAYER, milliseconds, loud});
      },
      {{PULSE_PLAYER, "0", "0"}, SilentProgram::As::copy}},
     {"alsa", [] { return std::make_unique<AlsaPlayer>("pipewire"); }, silentAplay("pipewire")},
     {"alsa_pulse", [] { return std::make_unique<AlsaPlayer>("pulse"); }, silentAplay("pulse")},
     {sandboxed,
      [] { return std::make_unique<SandboxedPlayer>(); },
      {paplay("/dev/zero"), SilentProgram::As::itself}}}};

/// With a session manager that restores to each stream the last volume of one of its kind.
class PluginFirstSamplesTest : public PlayerFixture, public testing::WithParamInterface<Kind> {
  protected:
    static void SetUpTestSuite() { session.emplace(PrivateAudioSession::Memory::kept); }

    /// Begins a stream of the kind that is never heard.
    void beginSilentStream() {
        auto [command, as] = GetParam().silent;
        if (as == SilentProgram::As::copy)
            command.front() = copy_.emplace(command.front(), "silent").path();
        else if (as == SilentProgram::As::flatpak)
            command = asFlatpak("org.example.Silent", root_.path(), command);
        silent_ = std::make_unique<ChildProcess>(command);
        const auto streams = [] { return jsonOf({"pactl", "-f", "json", "list", "sink-inputs"}); };
        EXPECT_TRUE(waitUntil([&] {
            if (streams().isEmpty() && silent_->outputSize() > 0)
                silent_->signal(SIGUSR1);
            return !streams().isEmpty();
        }));
        other_.index = streams()[0][u"index"].toInt();
        ASSERT_EQ(streams().size(), 1);
        outlastHold();
    }

    /// The samples that the player's next stream is heard with, all of them: at least so many,
    /// unless a busy machine keeps it silent for long.
    std::vector<float> nextStream(AnyPlayer& player, std::size_t least = 1) {
        player.play();
        std::vector<float> heard;
        const auto listen = [&](std::chrono::milliseconds time) {
            const auto samples = recorder_->record(time).channels[0];
            std::ranges::copy_if(samples, std::back_inserter(heard),
                                 [](float sample) { return std::abs(sample) > inaudible; });
        };
        listen(duration + 350ms);
        for (int i = 0; i < 20 && heard.size() < least; ++i)
            listen(350ms);
        return heard;
    }

    /// Plays a stream and expects `judge` of its samples. A stream during which the plug-in or the
    /// server had to wait for a processor, as long as it takes to begin one, says nothing about
    /// them: another is played in its place. `command` tells a process that was started again what
    /// the application has told its predecessor.
    void expectOfStreams(AnyPlayer& player, int count, std::size_t least,
                         const std::function<void(std::uint32_t pid)>& command,
                         const std::function<void()>& prepare,
                         const std::function<bool(const std::vector<float>&)>& judge) {
        const auto waited = [this] {
            return waitForProcessor(plugin_->pid()) +
                   waitForProcessor(session->processOf("pipewire")) +
                   waitForProcessor(session->processOf("wireplumber"));
        };
        for (int played = 0; count > 0 && played_ < mostRounds; ++played_, ++played) {
            if (player.restartIfStuck()) {
                nextStream(player);
                command(awaitProcess(player.pid()));
            }
            prepare();
            const auto before = waited();
            const auto samples = nextStream(player, least);
            const bool isRight = judge(samples);
            if (isRight || waited() - before < littleWait) {
                EXPECT_TRUE(isRight)
                    << "stream " << played << ": " << samples.size() << " samples, the first "
                    << (samples.empty() ? 0 : samples.front());
                --count;
            }
        }
        EXPECT_EQ(count, 0) << "the machine had no time";
    }

    const support::PrivateFolder root_;
    std::optional<support::NamedCopy> copy_;
    std::unique_ptr<ChildProcess> silent_;
    ShownStream other_; // that one's
    int played_ = 0;
};

} // namespace

TEST_P(PluginFirstSamplesTest, HaveTheProgramsVolume) {
    const bool isSandboxed = GetParam().name == std::string_view(sandboxed);
    const bool needsNamespaces = isSandboxed || GetParam().silent.as == SilentProgram::As::flatpak;
    if (needsNamespaces && !mayMakeNamespaces())
        GTEST_SKIP() << "the system does not allow namespaces";
    beginSilentStream();
    setElsewhere(other_, {30});
    const auto player = GetParam().make();
    if (isSandboxed)
        awaitProcess(player->pid());
    const auto restored = nextStream(*player);
    ASSERT_FALSE(restored.empty());
    EXPECT_NEAR(restored.front(), level * gainOf(30), 1e-4) << "it is restored";
    const auto setVolume = [this](std::uint32_t pid) { application_->setVolume(pid, 50); };
    setVolume(awaitProcess(player->pid()));
    bool isLoud = false;
    expectOfStreams(
        *player, rounds, enough, setVolume,
        [&] {
            isLoud = !isLoud;
            setElsewhere(other_, {isLoud ? 100 : 95});
        },
        [](const std::vector<float>& samples) {
            return samples.size() >= enough && std::ranges::all_of(samples, [](float sample) {
                       return std::abs(sample - level * gainOf(50)) < 1e-4;
                   });
        });
    const auto mute = [this](std::uint32_t pid) { application_->setMute(pid, true); };
    mute(awaitProcess(player->pid()));
    expectOfStreams(
        *player, 3, 0, mute, [] {},
        [](const std::vector<float>& samples) { return samples.empty(); });
}

INSTANTIATE_TEST_SUITE_P(Clients, PluginFirstSamplesTest, testing::ValuesIn(kinds),
                         [](const auto& each) { return std::string(each.param.name); });
