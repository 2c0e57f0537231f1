#pragma once

#include "platform/bus/UserService.h"

#include <QString>

#include <functional>

/// Starts the audio plug-in: its systemd service if this user has one, else the installed
/// program, which then keeps running when we quit. Also describes the state of a plug-in that does
/// not run. Main thread only.
class PluginStarter {
  public:
    /// Its access to the system; tests replace it.
    struct SystemCalls {
        std::function<void(std::function<void(const platform::UserService::State&)> answer)>
            askService;
        std::function<void(std::function<void(const QString& error)> answer)> startService;
        /// Returns an error, or an empty text.
        std::function<QString(const QString& program, const QString& messages)> startProgram;
    };

    static constexpr const char* serviceName = "tonvale-plugin.service";

    /// `program` is the installed one, which may be missing; `messages` the file for its output, or
    /// empty.
    PluginStarter(SystemCalls system, QString program, QString messages);

    /// Calls `failed`, at once or later, if it cannot be started. A successful start does not mean
    /// that it works.
    void start(std::function<void()> failed);

    /// Passes to `answer` whether systemd is about to start the service.
    void askWhetherItStarts(std::function<void(bool)> answer) const;

    /// Passes some lines for the user to `answer`: what is started, why the last start failed, the
    /// state of the service or the last messages of the program, and where to find more.
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
