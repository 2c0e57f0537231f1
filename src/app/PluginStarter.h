#pragma once

#include "platform/bus/UserService.h"

#include <QString>

#include <functional>

/// Starts the audio plug-in: its systemd service where this user has one, else the program in our
/// bundle, which then outlives us. Also says what is known of a plug-in that does not run. Main
/// thread only.
class PluginStarter {
  public:
    /// What it does in the system; tests replace it.
    struct SystemCalls {
        std::function<void(std::function<void(const platform::UserService::State&)> answer)>
            askService;
        std::function<void(std::function<void(const QString& error)> answer)> startService;
        /// Answers an error, or nothing.
        std::function<QString(const QString& program, const QString& messages)> startProgram;
    };

    static constexpr const char* serviceName = "tonvale-plugin.service";

    /// `program` is the one in the bundle, which may be missing; `messages` the file that takes
    /// what it prints, or nothing.
    PluginStarter(SystemCalls system, QString program, QString messages);

    /// Calls `failed`, at once or later, when it cannot be started. That it has been started does
    /// not say that it works.
    void start(std::function<void()> failed);

    /// Answers whether systemd is about to start the service.
    void askWhetherItStarts(std::function<void(bool)> answer) const;

    /// Answers some lines for people: what is started, how the last start has failed, the state
    /// of the service or the last messages of the program, and where there are more.
    void describe(std::function<void(const QString& text)> answer) const;

  private:
    void startProgram(const std::function<void()>& failed);
    QString describeService(const platform::UserService::State& state) const;
    QString describeProgram() const;

    const SystemCalls system_;
    const QString program_;
    const QString messages_;
    QString error_; // of the last start
};
