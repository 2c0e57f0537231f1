#pragma once

#include "e2e/PluginFixture.h"
#include "support/NamedCopy.h"

#include <csignal>

using support::runCommand;
using support::waitUntil;
using namespace std::chrono_literals;

inline constexpr float level = 0.5F;      // of every sample that is played
inline constexpr float inaudible = 1e-7F; // what the recorder makes of silence

/// A program that begins new streams of constant samples when it is told to.
class Player {
  public:
    /// Players of one name are one program.
    explicit Player(int streams = 1, std::chrono::milliseconds duration = 0ms,
                    float samples = level, const std::string& name = "stream_player")
        : copy_(STREAM_PLAYER, name)
        , process_({copy_.path(), std::to_string(streams), std::to_string(duration.count()),
                    std::to_string(samples)}) {
        EXPECT_TRUE(waitUntil([this] { return process_.outputSize() > 0; }));
    }

    void play() { process_.signal(SIGUSR1); }
    std::uint32_t pid() const { return static_cast<std::uint32_t>(process_.pid()); }
    support::ChildProcess& process() { return process_; }

  private:
    const support::NamedCopy copy_;
    support::ChildProcess process_;
};

/// A stream as another mixer shows it.
struct ShownStream {
    int index = 0;
    std::vector<int> percents; ///< of its channels
    bool muted = false;
};

/// User actions in another mixer.
inline void setElsewhere(const ShownStream& stream, const std::vector<int>& percents) {
    std::vector<std::string> command{"pactl", "set-sink-input-volume",
                                     std::to_string(stream.index)};
    for (const int percent : percents)
        command.push_back(std::to_string(percent) + "%");
    EXPECT_EQ(runCommand(command).status, 0);
}

inline void muteElsewhere(const ShownStream& stream, bool muted) {
    const std::string index = std::to_string(stream.index);
    EXPECT_EQ(runCommand({"pactl", "set-sink-input-mute", index, muted ? "1" : "0"}).status, 0);
}

/// For tests of the audible and visible result with programs that play constant samples.
class PlayerFixture : public PluginFixture {
  protected:
    /// Waits until these samples are heard and none that are louder. A busy machine lets a program
    /// miss many a cycle.
    bool hearsConstant(double value) {
        std::pair<double, double> last;
        const bool heard = waitUntil([&] {
            const auto recording = recorder_->record(100ms);
            const auto& samples = recording.channels[0];
            const double tolerance = 0.002 * value + inaudible;
            const auto matching = std::count_if(samples.begin(), samples.end(), [&](float sample) {
                return std::abs(sample - value) <= tolerance;
            });
            const auto [least, greatest] = std::minmax_element(samples.begin(), samples.end());
            last = {*least, *greatest};
            return *greatest <= value + tolerance &&
                   matching > static_cast<std::ptrdiff_t>(samples.size() / 4);
        });
        EXPECT_TRUE(heard) << "heard " << last.first << " to " << last.second << " instead of "
                           << value << "\n"
                           << (plugin_ ? plugin_->output() : "");
        return heard;
    }

    void awaitCheckin(const Player& player) { awaitProcess(static_cast<pid_t>(player.pid())); }

    /// `player_`, which plays and has checked in.
    Player& startPlayer() {
        player_.emplace();
        player_->play();
        awaitCheckin(*player_);
        return *player_;
    }

    /// The streams of a process that another mixer shows, the oldest first.
    static std::vector<ShownStream> shownStreams(std::uint32_t pid) {
        std::vector<ShownStream> streams;
        for (const auto& object : jsonOf({"pactl", "-f", "json", "list", "sink-inputs"})) {
            const QJsonValue properties = object[u"properties"];
            if (properties["application.process.id"].toString() != QString::number(pid) &&
                properties["media.name"].toString() != QStringLiteral("of %1").arg(pid))
                continue;
            ShownStream stream{object[u"index"].toInt(), {}, object[u"mute"].toBool()};
            for (const auto& volume : object[u"volume"].toObject())
                stream.percents.push_back(volume[u"value_percent"].toString().chopped(1).toInt());
            streams.push_back(stream);
        }
        std::ranges::sort(streams, {}, &ShownStream::index);
        return streams;
    }

    static ShownStream onlyStream(const Player& player) {
        std::vector<ShownStream> streams;
        EXPECT_TRUE(waitUntil([&] {
            streams = shownStreams(player.pid());
            return streams.size() == 1;
        }));
        return streams.empty() ? ShownStream{} : streams.front();
    }

    static void setElsewhereOnly(const Player& player, int percent) {
        setElsewhere(onlyStream(player), {percent});
    }

    std::optional<Player> player_;
};
