#pragma once

#include "comm/PluginBusClient.h"
#include "platform/base/MonotonicClock.h"
#include "platform/loop/Timer.h"
#include "settings/PreferencesMessage.h"

#include <QSet>
#include <QString>

#include <filesystem>
#include <functional>

namespace platform {
class UserDefaults;
}

/// Sends the stored settings to the audio plug-in: all of them when the plug-in starts, and soon
/// after each change, with the names that the user has changed since the last accepted message. The
/// next message waits for the reply to the previous one, so that a plug-in that hangs gets one at
/// most. The reply contains settings that were made before this program was started, and could not
/// be saved then. The thread's run loop, and no other thread.
class PreferencePublisher {
  public:
    /// As PluginBusClient::tell().
    using Sender = std::function<bool(const PreferencesMessage& word, PluginBusClient::Answered)>;

    /// The minimum interval between messages.
    static constexpr std::chrono::milliseconds pace{100};

    /// `file` is that of `defaults`, which must outlive the object. `learn` gets the plug-in's
    /// newer settings, unless the user has changed them meanwhile.
    PreferencePublisher(const platform::UserDefaults& defaults, std::filesystem::path file,
                        std::function<void(const NamedSetting&)> learn);

    /// Without a sender nothing is sent.
    void setSender(Sender sender) { sender_ = std::move(sender); }

    /// Call this when the plug-in has started.
    void begin();

    /// Call this when stored settings may have changed. Sends them before it returns, unless the
    /// last message is too recent. So a caller on the bus gets its reply after the plug-in has been
    /// notified.
    void changed();

    /// The user has changed or forgotten a program. Call changed() afterwards.
    void note(const QString& displayName);

  private:
    void tell();
    void answered(const std::optional<QList<NamedSetting>>& newer);
    PreferencesMessage word() const;

    const platform::UserDefaults& defaults_;
    const std::filesystem::path file_;
    const std::function<void(const NamedSetting&)> learn_;
    Sender sender_;
    QSet<QString> news_;     // keys that no plug-in has accepted yet
    QSet<QString> onTheWay_; // those in the message that waits for its reply
    bool isWaiting_ = false; // for an answer
    bool isDue_ = false;     // another word is, after it
    platform::MonotonicClock::time_point last_ = platform::MonotonicClock::time_point::min();
    platform::Timer timer_;
};
