#pragma once

#include "CommFixture.h"
#include "comm/MVCommunication.h"
#include "support/ScriptedPlugin.h"
#include "support/WaitUntil.h"

#include <QString>

#include <filesystem>
#include <iterator>
#include <memory>
#include <poll.h>

/// A server on a socket of its own, and plug-ins that connect to it.
class ServerFixture : public CommFixture {
  protected:
    std::shared_ptr<MVCommunication> server_ =
        MVCommunication::create(*this, QString::fromStdString(socketPath()));

    std::unique_ptr<support::ScriptedPlugin> connect() {
        auto plugin = std::make_unique<support::ScriptedPlugin>(socketPath());
        turn();
        return plugin;
    }

    std::unique_ptr<support::ScriptedPlugin> checkedIn(std::uint32_t pid, std::string_view name) {
        auto plugin = connect();
        plugin->checkIn(pid, name);
        turn();
        return plugin;
    }

    /// Whether the loop would wake its thread at once: what makes it spin.
    bool isBusy() const {
        pollfd wake{loop_.descriptor(), POLLIN, 0};
        return ::poll(&wake, 1, 0) > 0;
    }

    static std::size_t openDescriptors() {
        const std::filesystem::directory_iterator entries("/proc/self/fd");
        return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
    }

    void send(std::int32_t type, std::int32_t pid, std::int32_t value) {
        const MVCommConsoleMessage message{type, pid, 0, value};
        server_->sendMessage(&message);
    }

    /// The commands of `plugin`, as soon as the send queue has written `count` of them.
    static std::vector<std::string> commands(support::ScriptedPlugin& plugin, std::size_t count) {
        std::vector<std::string> texts;
        EXPECT_TRUE(support::waitUntil([&] {
            for (const MVCommConsoleMessage& command : plugin.takeCommands())
                texts.push_back(std::to_string(command.type) + "," + std::to_string(command.pid) +
                                "," + std::to_string(command.reserved) + "," +
                                std::to_string(command.value));
            return texts.size() >= count;
        }));
        return texts;
    }
};
