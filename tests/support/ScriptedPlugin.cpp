#include "support/ScriptedPlugin.h"

#include "platform/loop/UnixSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

namespace support {

namespace {

template <typename Message>
std::string bytesOf(const Message& message) {
    return {reinterpret_cast<const char*>(&message), sizeof message};
}

void fill(char* field, std::size_t size, std::string_view text) {
    std::copy_n(text.data(), std::min(size, text.size()), field);
}

} // namespace

ScriptedPlugin::ScriptedPlugin(const std::string& path)
    : socket_(platform::connectUnixSocket(path)) {
    EXPECT_TRUE(socket_) << path << ": " << std::strerror(errno);
}

std::string ScriptedPlugin::checkinBytes(std::uint32_t pid, std::string_view name,
                                         std::string_view path) {
    MVCommCheckinMessage message{};
    message.messageID = kMVCommCheckin;
    message.pid = pid;
    fill(message.name, sizeof message.name, name);
    fill(message.path, sizeof message.path, path);
    return bytesOf(message);
}

std::string ScriptedPlugin::activityBytes(std::uint32_t pid, float level) {
    return bytesOf(MVCommActivityMessage{kMVCommActivity, pid, level});
}

void ScriptedPlugin::checkIn(std::uint32_t pid, std::string_view name, std::string_view path) {
    sendBytes(checkinBytes(pid, name, path));
}

void ScriptedPlugin::reportLevel(std::uint32_t pid, float level) {
    sendBytes(activityBytes(pid, level));
}

void ScriptedPlugin::sendBytes(std::string_view bytes) {
    const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    EXPECT_EQ(sent, static_cast<ssize_t>(bytes.size())) << std::strerror(errno);
}

std::vector<MVCommConsoleMessage> ScriptedPlugin::takeCommands() {
    std::vector<MVCommConsoleMessage> commands;
    MVCommConsoleMessage command{};
    while (::recv(socket_.get(), &command, sizeof command, MSG_DONTWAIT) == ssize_t{sizeof command})
        commands.push_back(command);
    return commands;
}

bool ScriptedPlugin::awaitCommand() {
    constexpr int patience = 10000; // milliseconds
    pollfd ready{socket_.get(), POLLIN, 0};
    return ::poll(&ready, 1, patience) == 1;
}

bool ScriptedPlugin::isEnded() {
    takeCommands();
    char byte = 0;
    const ssize_t got = ::recv(socket_.get(), &byte, 1, MSG_DONTWAIT);
    return got == 0 || (got < 0 && errno != EAGAIN);
}

} // namespace support
