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

/// Keeps the audio plug-in told of what is remembered: all of it when the plug-in comes, and soon
/// after each change, with the names of what a person has set since the plug-in last took it. The
/// next word waits for the answer to the one before, so that a plug-in that hangs gets one at most.
/// What the plug-in answers was set before this program was started, and could not be saved then.
/// The thread's run loop, and no other thread.
class PreferencePublisher {
  public:
    /// As PluginBusClient::tell().
    using Sender = std::function<bool(const PreferencesMessage& word, PluginBusClient::Answered)>;

    /// Words are no closer to each other than that.
    static constexpr std::chrono::milliseconds pace{100};

    /// `file` is that of `defaults`, which must outlive the object. `learn` takes what the plug-in
    /// knows newer, unless a person has set something else meanwhile.
    PreferencePublisher(const platform::UserDefaults& defaults, std::filesystem::path file,
                        std::function<void(const NamedSetting&)> learn);

    /// Until then nobody is told.
    void setSender(Sender sender) { sender_ = std::move(sender); }

    /// The plug-in has come.
    void begin();

    /// What is remembered has changed, or may have. Tells that before it returns, unless the last
    /// word is too recent. A caller on the bus thus gets its answer after the plug-in has been
    /// told.
    void changed();

    /// A person has set a program, or had it forgotten; changed() has yet to be called.
    void note(const QString& displayName);

  private:
    void tell();
    void answered(const std::optional<QList<NamedSetting>>& newer);
    PreferencesMessage word() const;

    const platform::UserDefaults& defaults_;
    const std::filesystem::path file_;
    const std::function<void(const NamedSetting&)> learn_;
    Sender sender_;
    QSet<QString> news_;     // keys, that no plug-in has taken
    QSet<QString> onTheWay_; // those of them that the word has that waits for its answer
    bool isWaiting_ = false; // for an answer
    bool isDue_ = false;     // another word is, after it
    platform::MonotonicClock::time_point last_ = platform::MonotonicClock::time_point::min();
    platform::Timer timer_;
};
