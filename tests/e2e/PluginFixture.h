#pragma once

#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ListeningApplication.h"
#include "support/PrivateAudioSession.h"
#include "support/SinkRecorder.h"
#include "support/Tone.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <optional>

/// For tests of the plug-in's program on real sound: an audio session that all tests of the suite
/// share, the application's side of the socket, the plug-in, and a recorder on the sink. A test may
/// end and start each of them.
class PluginFixture : public testing::Test {
  protected:
    static constexpr unsigned toneFrequency = 440;
    static constexpr double tonePeak = 0.5;

    /// What a percentage does to the samples.
    static double gainOf(double percent) { return std::pow(percent / 100.0, 3); }

    static void SetUpTestSuite() { session.emplace(); }
    static void TearDownTestSuite() { session.reset(); }

    void startPlugin() { plugin_.emplace(std::vector<std::string>{TONVALE_PLUGIN}); }

    /// The output and exit code of `Tonvale OPTION...`.
    static support::CommandResult runPlugin(std::vector<std::string> options) {
        options.insert(options.begin(), TONVALE_PLUGIN);
        return support::runCommand(options);
    }

    /// The objects that a command prints as JSON.
    static QJsonArray jsonOf(const std::vector<std::string>& command) {
        return QJsonDocument::fromJson(support::runCommand(command).output.c_str()).array();
    }

    /// How often `part` is in `text`.
    static std::size_t timesIn(const std::string& text, const std::string& part) {
        std::size_t times = 0;
        for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
            ++times;
        return times;
    }

    /// How many connections the running plug-in has to the sound server.
    static std::size_t serverConnections() {
        return timesIn(support::runCommand({"pw-cli", "ls", "Client"}).output, "\"Tonvale\"");
    }

    /// Whether it has those of one with nothing to do: its own, and one that is at hand.
    static bool hasIdleConnections() {
        return support::waitUntil([] { return serverConnections() == 2; });
    }

    /// Waits until the running plug-in's status has `text` in it.
    static bool tells(const std::string& text) {
        std::string status;
        const bool told = support::waitUntil([&] {
            status = runPlugin({"--status"}).output;
            return status.find(text) != std::string::npos;
        });
        EXPECT_TRUE(told) << text << " is not in\n" << status;
        return told;
    }

    /// Waits until exactly one program of that name has checked in, and returns it.
    MVCommConnectionProcess awaitProgram(const QString& name) {
        std::optional<MVCommConnectionProcess> program;
        EXPECT_TRUE(support::waitUntil([&] {
            program = application_->program(name);
            return program.has_value();
        })) << qPrintable(name)
            << "\n"
            << (plugin_ ? plugin_->output() : "");
        return program.value_or(MVCommConnectionProcess{});
    }

    bool hasCheckedIn(std::uint32_t pid) const {
        return std::ranges::any_of(application_->programs(),
                                   [pid](const auto& each) { return each.pid == pid; });
    }

    /// Waits until the program of the process has checked in, and returns its pid.
    std::uint32_t awaitProcess(pid_t process) {
        const auto pid = static_cast<std::uint32_t>(process);
        EXPECT_TRUE(support::waitUntil([&] { return hasCheckedIn(pid); }))
            << pid << "\n"
            << (plugin_ ? plugin_->output() : "");
        return pid;
    }

    /// Waits until a stream that has just begun is no longer held at its volume.
    void outlastHold() { recorder_->record(std::chrono::milliseconds(700)); }

    /// Waits until changes of a stream that has just begun are taken for the user's, and until one
    /// that was made just now counts.
    void outlastRest() { recorder_->record(std::chrono::milliseconds(2300)); }

    /// Restarts all services. Streams that were there are gone.
    void restartServer() {
        recorder_.reset();
        session->restart(support::PrivateAudioSession::server);
        recorder_.emplace();
    }

    /// Ends all services.
    void stopServer() {
        using Session = support::PrivateAudioSession;
        recorder_.reset();
        for (const char* const service :
             {Session::pulseService, Session::sessionManager, Session::server})
            session->stop(service);
    }

    /// Waits until the recorder hears the tone at this peak, to a twentieth.
    bool hears(double peak, unsigned frequency = toneFrequency) {
        return support::waitUntil([&] {
            const double heard =
                recorder_->record(std::chrono::milliseconds(200)).amplitude(frequency);
            return std::abs(heard - peak) <= std::max(0.05 * peak, 0.0005);
        });
    }

    /// Waits until the newest level of the program is near this one, to a twentieth.
    bool reportsLevel(std::uint32_t pid, double wanted) {
        const auto& levels = application_->levelsOf(pid);
        return support::waitUntil([&] {
            return !levels.empty() &&
                   std::abs(static_cast<double>(levels.back().level) - wanted) <= 0.05 * wanted;
        });
    }

    static inline std::optional<support::PrivateAudioSession> session;

    platform::RunLoop loop_;
    platform::RunLoopNotifier notifier_{loop_};
    std::optional<support::ListeningApplication> application_{std::in_place};
    std::optional<support::ChildProcess> plugin_{std::in_place,
                                                 std::vector<std::string>{TONVALE_PLUGIN}};
    std::optional<support::SinkRecorder> recorder_{std::in_place};
};
