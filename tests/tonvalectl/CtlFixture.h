#pragma once

#include "comm/MVCommSocketPath.h"
#include "platform/defaults/PropertyList.h"
#include "platform/loop/UnixSocket.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/ScriptedPlugin.h"
#include "support/TestEnvironment.h"
#include "support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariantMap>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using support::contentOf;

/// For black-box tests of tonvalectl and of what it talks to: the real application, off screen, on
/// a session bus of its own, and programs that check in.
class CtlFixture : public testing::Test {
  protected:
    struct Result {
        int status;
        std::string output;
        std::string errors;
    };

    CtlFixture() {
        std::filesystem::create_directories(library_ / "Shared");
        support::linkInstalledPlugin(library_);
    }

    void startTonvale() {
        tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
        ASSERT_TRUE(support::waitUntil([&] { return ctl({"list"}).status == 0; }))
            << tonvale_->output();
    }

    /// A program that has an item by now.
    support::ScriptedPlugin& checkIn(std::uint32_t pid, const std::string& name) {
        auto& plugin = plugins_[name];
        plugin = std::make_unique<support::ScriptedPlugin>(MVCommMainSocketPath());
        plugin->checkIn(pid, name);
        const std::string shown = name == "coreaudiod" ? "Sound Effects" : name;
        EXPECT_TRUE(support::waitUntil([&] { return !programJson(shown).isEmpty(); })) << name;
        return *plugin;
    }

    void leave(const std::string& name) {
        plugins_.erase(name);
        EXPECT_TRUE(support::waitUntil([&] { return programJson(name).isEmpty(); })) << name;
    }

    /// The output and exit code of `tonvalectl ARGUMENT...`.
    Result ctl(const std::vector<std::string>& arguments) const {
        const std::string errors = folder_.path() / "errors";
        std::vector<std::string> words{"sh", "-c", "exec \"$@\" 2>\"$0\"", errors, TONVALECTL};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const auto [status, output] = support::runCommand(words);
        return {status, output, contentOf(errors)};
    }

    /// True when it has ended with 0 and without a word.
    testing::AssertionResult does(const std::vector<std::string>& arguments) const {
        const Result result = ctl(arguments);
        if (result.status == 0 && (result.output + result.errors).empty())
            return testing::AssertionSuccess();
        return testing::AssertionFailure() << result.status << result.output << result.errors;
    }

    QJsonDocument json(const std::vector<std::string>& arguments) const {
        return QJsonDocument::fromJson(QByteArray::fromStdString(ctl(arguments).output));
    }

    /// The entry of `list --json`; empty when there is none.
    QJsonObject programJson(const std::string& name, const char* option = "--json") const {
        for (const auto& entry : json({"list", "--json", option}).array()) {
            if (entry.toObject()["name"].toString().toStdString() == name)
                return entry.toObject();
        }
        return {};
    }

    /// "type,value" of each volume and mute that has been sent to a process, in order.
    static std::string takeCommands(support::ScriptedPlugin& plugin, std::uint32_t pid) {
        std::string text;
        for (const MVCommConsoleMessage& command : plugin.takeCommands()) {
            if (command.pid == static_cast<std::int32_t>(pid))
                text += std::to_string(command.type) + "," + std::to_string(command.value) + " ";
        }
        return text;
    }

    static bool receives(support::ScriptedPlugin& plugin, std::uint32_t pid,
                         const std::string& commands) {
        std::string all;
        return support::waitUntil([&] {
            all += takeCommands(plugin, pid);
            return all == commands;
        });
    }

    /// Waits until the preferences, and their copies, have this under a key.
    bool isStored(const QString& key, const QVariant& value) const {
        return support::waitUntil([&] {
            return preferences(config_ / file)[key] == value &&
                   preferences(library_ / "Shared" / file)[key] == value;
        });
    }

    static QVariantMap preferences(const std::filesystem::path& path) {
        return platform::parsePropertyList(QByteArray::fromStdString(contentOf(path)))
            .value_or(QVariant())
            .toMap();
    }

    static QVariantMap setting(std::optional<double> volume, bool muted = false) {
        QVariantMap map;
        if (volume)
            map["Volume"] = *volume;
        if (muted)
            map["Mute"] = true;
        return map;
    }

    bool logs(const std::string& text) const {
        return support::waitUntil([&] { return log().find(text) != std::string::npos; });
    }

    std::string log() const { return contentOf(folder_.path() / "state/Tonvale/Tonvale.log"); }

    static constexpr const char* file = "com.quarnel.Tonvale.plist";
    const support::PrivateFolder folder_;
    const std::filesystem::path config_ = folder_.path() / "config";
    const std::filesystem::path library_ = folder_.path() / "library";
    const support::ScopedVariable variables_[6] = {
        {"TONVALE_SOCKET_DIR", folder_.path()},       {"XDG_CONFIG_HOME", config_},
        {"XDG_STATE_HOME", folder_.path() / "state"}, {"XDG_RUNTIME_DIR", folder_.path()},
        {"TONVALE_LOCAL_LIBRARY", library_},          {"HOME", folder_.path()}};
    std::optional<support::PrivateBus> bus_{std::in_place};
    std::optional<support::ChildProcess> tonvale_;
    std::map<std::string, std::unique_ptr<support::ScriptedPlugin>> plugins_;
};
