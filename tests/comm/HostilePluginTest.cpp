#include "ServerFixture.h"

#include "platform/loop/UnixSocket.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <sys/socket.h>
#include <unistd.h>

using namespace std::chrono_literals;
using platform::FileDescriptor;
using support::ScriptedPlugin;

namespace {

using Strings = std::vector<std::string>;

class HostilePluginTest : public ServerFixture {
  protected:
    HostilePluginTest() { received.clear(); }

    MVCommDataCallback dataCallback() const override { return &receive; }

    static void receive(const MVCommActivityMessage* message) { received.push_back(*message); }

    std::vector<std::string> faults() const {
        std::vector<std::string> texts;
        for (const auto& line : log_.lines()) {
            if (line.text.starts_with("handleSocketData: ") &&
                line.text.find("Duplicate") == std::string::npos)
                texts.push_back(line.text);
        }
        return texts;
    }

    static inline std::vector<MVCommActivityMessage> received;
};

/// What the server has to make of one read.
struct Expected {
    std::size_t activities = 0;
    std::size_t checkins = 0;
    Strings faults;
};

Expected expectedOf(std::string_view read) {
    constexpr std::size_t activity = 12;
    constexpr std::size_t checkin = 1160;
    Expected result;
    const auto fault = [&](const std::string& text) {
        result.faults = {"handleSocketData: " + text};
        return result;
    };
    while (!read.empty()) {
        const std::string size = std::to_string(read.size());
        if (read.size() < 4)
            return fault("Message too short (" + size + ").");
        std::uint32_t id = 0;
        std::memcpy(&id, read.data(), sizeof id);
        if (id == 0x0900 && read.size() < activity)
            return fault("Invalid data len (" + size + ") for messageID 0x0900 (expected 12)");
        if (id == 0x0800 && read.size() < checkin)
            return fault("Invalid data len (" + size + ") for messageID 0x0800");
        if (id != 0x0900 && id != 0x0800) {
            std::array<char, 64> text{};
            std::snprintf(text.data(), text.size(), "Unknown messageID 0x%04x", id);
            return fault(text.data());
        }
        ++(id == 0x0900 ? result.activities : result.checkins);
        read.remove_prefix(id == 0x0900 ? activity : checkin);
    }
    return result;
}

std::string bytesOf(std::uint32_t id, char filling, std::size_t size) {
    std::string bytes(size, filling);
    std::memcpy(bytes.data(), &id, sizeof id);
    return bytes;
}

std::string repeated(std::string_view message, std::size_t size) {
    std::string bytes;
    while (bytes.size() < size)
        bytes += message;
    return bytes;
}

} // namespace

TEST_F(HostilePluginTest, EveryLengthOfEveryKindIsTakenOrLogged) {
    constexpr std::size_t longest = 2400;
    const std::string activity = ScriptedPlugin::activityBytes(7, 1.0F);
    const std::string checkin = ScriptedPlugin::checkinBytes(7, "player");
    const struct {
        const char* name;
        std::string bytes;
    } kinds[] = {
        {"activity", repeated(activity, longest)},
        {"check-in", repeated(checkin, longest)},
        {"check-in and activity", repeated(checkin + activity, longest)},
        {"check-in without a NUL", repeated(bytesOf(0x0800, 'n', 1160), longest)},
        {"activity, then anything", activity + bytesOf(0x0801, '\t', longest)},
        {"nothing but NUL", std::string(longest, '\0')},
        {"command to set the volume", bytesOf(9, '\0', longest)},
        {"command to mute", bytesOf(10, '\0', longest)},
        {"command to read the ignore list", bytesOf(11, '\0', longest)},
        {"identifier of the other byte order", bytesOf(0x00080000, '\0', longest)},
        {"highest identifier", bytesOf(0xFFFFFFFF, '\xff', longest)},
    };
    const auto plugin = connect();
    for (const auto& kind : kinds) {
        for (std::size_t length = 0; length <= longest; ++length) {
            SCOPED_TRACE(std::string(kind.name) + " of " + std::to_string(length) + " bytes");
            advance(1s); // after which lines are not thinned out
            received.clear();
            log_.clear();
            plugin->sendBytes(kind.bytes.substr(0, length));
            loop_.turn();
            const Expected expected = expectedOf(kind.bytes.substr(0, length));
            ASSERT_EQ(received.size(), expected.activities);
            ASSERT_EQ(log_.count("' connected (pid="), expected.checkins);
            ASSERT_EQ(faults(), expected.faults);
        }
        ASSERT_EQ(server_->connectionProcesses().size(), 1) << kind.name;
    }
    EXPECT_LE(server_->connectionProcesses()[0].name.size(), 1152) << "beyond the message";
}

TEST_F(HostilePluginTest, HalvesThatComeInTwoReadsAreTwoFaults) {
    const auto plugin = connect();
    for (const std::string& message :
         {ScriptedPlugin::activityBytes(0x01010101, 1.0F),
          ScriptedPlugin::checkinBytes(0x01010101, std::string(127, 'n'),
                                       std::string(1023, 'p'))}) {
        const std::size_t step = message.size() > sizeof(MVCommActivityMessage) ? 13 : 1;
        for (std::size_t half = 1; half < message.size(); half += step) {
            advance(1s);
            log_.clear();
            plugin->sendBytes(message.substr(0, half));
            loop_.turn();
            plugin->sendBytes(message.substr(half));
            loop_.turn();
            ASSERT_EQ(faults().size(), 2U) << half << " of " << message.size();
        }
    }
    EXPECT_TRUE(received.empty());
    EXPECT_EQ(server_->connectionProcesses()[0].pid, 0U);
}

TEST_F(HostilePluginTest, LinesAboutOnePluginAreTenASecondThenTheirNumberStandsForTheRest) {
    const std::pair<const char*, std::string> kinds[] = {
        {"Unknown messageID", "xxxx"},
        {"Message too short", "x"},
        {"Invalid data len", ScriptedPlugin::activityBytes(7, 1.0F).substr(0, 11)},
        {"Duplicate checkin", ScriptedPlugin::checkinBytes(7, "noisy")},
    };
    const auto other = checkedIn(8, "other");
    for (const auto& [line, bytes] : kinds) {
        SCOPED_TRACE(line);
        log_.clear();
        const auto noisy = checkedIn(7, "noisy");
        const auto misbehave = [&, &bytes = bytes](int times) {
            for (int i = 0; i < times; ++i) {
                noisy->sendBytes(bytes);
                turn();
            }
        };
        misbehave(25);
        EXPECT_EQ(log_.count(line), 10U);
        other->sendBytes("yyyy");
        turn();
        EXPECT_EQ(log_.count("0x79797979"), 1U) << "nobody else's are left out";
        advance(999ms);
        EXPECT_EQ(log_.count("Suppressed"), 0U);
        advance(1ms);
        EXPECT_EQ(log_.count("Suppressed 15 more lines about data from noisy/7"), 1U);
        log_.clear();
        misbehave(12);
        EXPECT_EQ(log_.count(line), 10U);
        noisy->disconnect();
        turn();
        EXPECT_EQ(log_.count("Suppressed 2 more lines about data from noisy/7"), 1U) << "at once";
        advance(1s);
        EXPECT_EQ(log_.count("Suppressed"), 1U);
    }
}

TEST_F(HostilePluginTest, LevelsAndPidsArePassedOnBitForBit) {
    const auto plugin = connect();
    std::vector<std::uint32_t> sent;
    std::string bytes;
    for (const float level :
         {0.0F, -0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN(),
          std::numeric_limits<float>::signaling_NaN(), std::numeric_limits<float>::infinity(),
          -std::numeric_limits<float>::infinity(), std::numeric_limits<float>::denorm_min(),
          std::numeric_limits<float>::max(), std::bit_cast<float>(0xFFFFFFFFU)}) {
        for (const std::uint32_t pid : {0U, 1U, 0xFFFFFFFFU}) {
            const std::uint32_t fields[] = {kMVCommActivity, pid,
                                            std::bit_cast<std::uint32_t>(level)};
            sent.insert(sent.end(), std::begin(fields), std::end(fields));
        }
    }
    bytes.assign(reinterpret_cast<const char*>(sent.data()), sent.size() * sizeof sent[0]);
    plugin->sendBytes(bytes);
    turn();
    ASSERT_EQ(received.size() * sizeof received[0], bytes.size());
    EXPECT_EQ(std::memcmp(received.data(), bytes.data(), bytes.size()), 0);

    for (const std::uint32_t pid : {0U, 0xFFFFFFFFU}) {
        const auto nameless = connect();
        nameless->checkIn(pid, "");
        nameless->reportLevel(pid, 1.0F);
        turn();
        EXPECT_EQ(server_->connectionProcesses().back().name, QString::number(pid));
        received.clear();
        nameless->disconnect();
        advance(100ms);
        ASSERT_FALSE(received.empty());
        EXPECT_EQ(received.back().pid, pid);
        EXPECT_EQ(received.back().level, 0.0F);
    }
}

TEST_F(HostilePluginTest, NamesAndPathsAreStoredAsTheyAreAndLoggedOnOneLine) {
    const struct {
        std::string text;
        QString stored;
        std::string logged;
    } cases[] = {
        {"a\nb", "a\nb", "a\\nb"},
        {"\n:00:00.000: [E] forged", "\n:00:00.000: [E] forged", "\\n:00:00.000: [E] forged"},
        {"\x1b[2J\a\r\x7f\t", "\x1b[2J\a\r\x7f\t", "?[2J????"},
        {"exe\u202egnp.\u2066x\u2069", "exe\u202egnp.\u2066x\u2069",
         "exe\\u202egnp.\\u2066x\\u2069"},
        {"one\u2028two\u2029", "one\u2028two\u2029", "one\\u2028two\\u2029"},
        {"next\u0085line\u009b2J\v\f", "next\u0085line\u009b2J\v\f", "next\\u85line??2J??"},
        {"\u200eמוזיקה\u200f", "\u200eמוזיקה\u200f", "\u200eמוזיקה\u200f"},
        {"%s%n%1%@", "%s%n%1%@", "%s%n%1%@"},
        {"\\n", "\\n", "\\n"},
        {"\xc3", "\ufffd", "\ufffd"},
        {"\xed\xa0\x80z", "\ufffd\ufffd\ufffdz", "\ufffd\ufffd\ufffdz"},
        {std::string(127, '\n'), QString(127, QLatin1Char('\n')), repeated("\\n", 254)},
        {std::string(127, '\xff'), QString(127, QChar(0xfffd)), repeated("\ufffd", 381)},
    };
    for (const auto& text : cases) {
        log_.clear();
        const auto plugin = checkedIn(5, text.text);
        EXPECT_EQ(server_->connectionProcesses().back().name, text.stored);
        EXPECT_EQ(log_.count("'" + text.logged + "' connected (pid=5, path='/usr/bin/x')"), 1U)
            << log_.lines().back().text;

        plugin->checkIn(6, "later", text.text);
        turn();
        EXPECT_EQ(server_->connectionProcesses().back().pid, 6U);
        EXPECT_EQ(server_->connectionProcesses().back().path, text.stored);
        EXPECT_EQ(log_.count("Duplicate checkin for " + text.logged + "/5, overwriting"), 1U);
        EXPECT_EQ(log_.count("'later' connected (pid=6, path='" + text.logged + "')"), 1U);

        plugin->checkIn(5, text.text);
        turn();
        plugin->disconnect();
        turn();
        EXPECT_EQ(log_.count("'" + text.logged + "' disconnected"), 1U);
    }
}

namespace {

/// A descriptor that bytes bring along.
void sendWithDescriptor(int socket, std::string_view bytes, int passed) {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof(int))> control{};
    iovec data{const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    cmsghdr* const header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof passed);
    std::memcpy(CMSG_DATA(header), &passed, sizeof passed);
    EXPECT_EQ(::sendmsg(socket, &message, MSG_NOSIGNAL), static_cast<ssize_t>(bytes.size()));
}

void sendAll(int socket, std::string_view bytes, int flags = 0) {
    // A kernel may know no urgent bytes here; then there is nothing to defend against.
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), flags | MSG_NOSIGNAL);
    EXPECT_TRUE(sent == static_cast<ssize_t>(bytes.size()) || flags != 0) << std::strerror(errno);
}

struct Behaviour {
    const char* name;
    void (*act)(FileDescriptor& socket);
    bool leaves; // the server notices the disconnection
};

const Behaviour behaviours[] = {
    {"never writes", [](FileDescriptor&) {}, false},
    {"never reads",
     [](FileDescriptor& socket) { sendAll(socket.get(), ScriptedPlugin::checkinBytes(5, "x")); },
     false},
    {"leaves half a message",
     [](FileDescriptor& socket) {
         sendAll(socket.get(), ScriptedPlugin::checkinBytes(5, "x").substr(0, 700));
     },
     false},
    {"vanishes before it is accepted", [](FileDescriptor& socket) { socket.reset(); }, true},
    {"vanishes in the middle of a message",
     [](FileDescriptor& socket) {
         sendAll(socket.get(), ScriptedPlugin::checkinBytes(5, "x").substr(0, 700));
         socket.reset();
     },
     true},
    {"closes its sending half",
     [](FileDescriptor& socket) {
         sendAll(socket.get(), ScriptedPlugin::activityBytes(5, 1.0F));
         ::shutdown(socket.get(), SHUT_WR);
     },
     true},
    {"closes its receiving half", [](FileDescriptor& socket) { ::shutdown(socket.get(), SHUT_RD); },
     false},
    {"sends urgent bytes",
     [](FileDescriptor& socket) {
         sendAll(socket.get(), "!", MSG_OOB);
         sendAll(socket.get(), ScriptedPlugin::activityBytes(5, 1.0F), MSG_OOB);
     },
     false},
    {"passes descriptors on",
     [](FileDescriptor& socket) {
         for (int i = 0; i < 20; ++i)
             sendWithDescriptor(socket.get(), ScriptedPlugin::activityBytes(5, 1.0F),
                                STDERR_FILENO);
     },
     false},
};

} // namespace

TEST_F(HostilePluginTest, NothingThatOneDoesHarmsAnother) {
    server_->setAllowFrequentMessages(true);
    const auto honest = checkedIn(1, "honest");
    const std::size_t descriptors = openDescriptors();
    for (const Behaviour& behaviour : behaviours) {
        SCOPED_TRACE(behaviour.name);
        FileDescriptor hostile = platform::connectUnixSocket(socketPath());
        ASSERT_TRUE(hostile);
        behaviour.act(hostile);
        for (int i = 0; i < 30; ++i)
            loop_.turn();
        EXPECT_FALSE(isBusy()) << "the loop finds no rest";
        EXPECT_EQ(server_->connectionProcesses().size(), behaviour.leaves ? 1 : 2);

        // More than the kernel keeps for somebody who does not read.
        for (int batch = 0; batch < 10; ++batch) {
            for (int value = 0; value < 100; ++value)
                send(kMVCommSetVolume, 1, value);
            EXPECT_EQ(commands(*honest, 100).size(), 100U);
        }
        received.clear();
        honest->reportLevel(1, 0.5F);
        loop_.turn();
        ASSERT_EQ(received.size(), 1U);
        EXPECT_EQ(received[0].pid, 1U);

        hostile.reset();
        turn();
        EXPECT_EQ(server_->connectionProcesses().size(), 1);
        advance(1s);
        EXPECT_EQ(openDescriptors(), descriptors);
    }
}
