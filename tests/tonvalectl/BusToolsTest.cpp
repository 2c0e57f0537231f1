#include "tonvalectl/CtlFixture.h"

#include <unistd.h>

// The interface as other programs use it, with tools that know nothing of it.
namespace {

constexpr std::uint32_t pid = 4711;
constexpr const char* root = "/com/quarnel/Tonvale";
constexpr const char* player = "/com/quarnel/Tonvale/programs/Music_20Player";
constexpr const char* program = "com.quarnel.Tonvale.Program";

using Words = std::vector<std::string>;

class BusToolsTest : public CtlFixture {
  protected:
    void SetUp() override {
        startTonvale();
        plugin_ = &checkIn(pid, "Music Player");
    }

    static support::CommandResult busctl(const Words& words) {
        Words all{"busctl", "--user"};
        all.insert(all.end(), words.begin(), words.end());
        return support::runCommand(all);
    }

    static support::CommandResult gdbus(const std::string& path, const std::string& method,
                                        const Words& words = {}) {
        Words all{"gdbus",         "call", "--session", "--dest", "com.quarnel.Tonvale",
                  "--object-path", path,   "--method",  method};
        all.insert(all.end(), words.begin(), words.end());
        return support::runCommand(all);
    }

    static std::string get(const char* path, const char* interface, const char* property) {
        return busctl({"get-property", "com.quarnel.Tonvale", path, interface, property}).output;
    }

    static bool has(const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    }

    support::ScriptedPlugin* plugin_ = nullptr;
};

} // namespace

TEST_F(BusToolsTest, PropertiesAreReadAndSetByTheStandardInterface) {
    EXPECT_EQ(get(player, program, "Volume"), "i 100\n");
    EXPECT_EQ(get(player, program, "Name"), "s \"Music Player\"\n");
    EXPECT_EQ(get(player, program, "ProcessId"), "u 4711\n");
    const auto set = [](const Words& words) {
        Words all{"set-property", "com.quarnel.Tonvale"};
        all.insert(all.end(), words.begin(), words.end());
        return busctl(all).status == 0;
    };
    EXPECT_TRUE(set({player, program, "Volume", "i", "40"}));
    EXPECT_TRUE(set({player, program, "Muted", "b", "true"}));
    EXPECT_TRUE(receives(*plugin_, pid, "9,40 10,1 "));
    EXPECT_EQ(get(player, program, "Volume"), "i 40\n");
    EXPECT_EQ(get(player, program, "Muted"), "b true\n");
    EXPECT_TRUE(set({root, "com.quarnel.Tonvale.Mixer", "DefaultVolume", "i", "55"}));
    EXPECT_EQ(get(root, "com.quarnel.Tonvale.Mixer", "DefaultVolume"), "i 55\n");
}

TEST_F(BusToolsTest, EveryObjectCanBeIntrospected) {
    const std::string tree = busctl({"--list", "tree", "com.quarnel.Tonvale"}).output;
    EXPECT_TRUE(has(tree, std::string(root) + "\n")) << tree;
    EXPECT_TRUE(has(tree, std::string(player) + "\n")) << tree;
    const std::string rootTells = busctl({"introspect", "com.quarnel.Tonvale", root}).output;
    for (const char* const name :
         {"org.freedesktop.DBus.ObjectManager", ".GetManagedObjects", ".InterfacesAdded",
          "org.freedesktop.Application", ".Activate", "com.quarnel.Tonvale.Mixer", ".ShowWindow"})
        EXPECT_TRUE(has(rootTells, name)) << name << " is not in\n" << rootTells;
    const std::string tells = busctl({"introspect", "com.quarnel.Tonvale", player}).output;
    for (const char* const name : {program, ".Activity", ".Controllable", ".IconName", ".Ignore",
                                   ".Playing", ".Position", ".Reason", ".PropertiesChanged"})
        EXPECT_TRUE(has(tells, name)) << name << " is not in\n" << tells;
    const auto objects = gdbus(root, "org.freedesktop.DBus.ObjectManager.GetManagedObjects").output;
    EXPECT_TRUE(has(objects, std::string("objectpath '") + player + "': {'" + program + "': {"))
        << objects;
}

TEST_F(BusToolsTest, QuittingIsAnsweredFirst) {
    EXPECT_EQ(gdbus(root, "com.quarnel.Tonvale.Mixer.Quit").output, "()\n");
    EXPECT_EQ(tonvale_->wait(), 0);
}

TEST_F(BusToolsTest, ChangesAreSignalledOnceEach) {
    support::ChildProcess listener(
        {"gdbus", "monitor", "--session", "--dest", "com.quarnel.Tonvale"});
    ASSERT_TRUE(support::waitUntil([&] { return has(listener.output(), "is owned by"); }));
    EXPECT_TRUE(does({"set", "music", "40"}));
    EXPECT_TRUE(does({"set", "music", "40"}));
    EXPECT_TRUE(does({"mute", "music"}));
    EXPECT_TRUE(does({"ignore", "music"}));
    EXPECT_TRUE(does({"unignore", "Music"}));
    EXPECT_TRUE(support::waitUntil([&] { return has(listener.output(), "InterfacesAdded"); }));
    const std::string output = listener.output();
    const std::string changed = std::string(player) +
                                ": org.freedesktop.DBus.Properties.PropertiesChanged ('" + program +
                                "', ";
    for (const char* const told : {"{'Volume': <40>}, @as [])\n", "{'Muted': <true>}, @as [])\n"}) {
        const auto at = output.find(changed + told);
        EXPECT_NE(at, std::string::npos) << told << " is not in\n" << output;
        EXPECT_EQ(at, output.rfind(changed + told)) << output;
    }
    EXPECT_TRUE(has(output, std::string("InterfacesRemoved (objectpath '") + player + "', ['" +
                                program + "'])"))
        << output;
}

TEST_F(BusToolsTest, WhatMakesNoSenseIsAStandardError) {
    const std::string set = "org.freedesktop.DBus.Properties.Set";
    const std::string read = "org.freedesktop.DBus.Properties.Get";
    const std::string mixer = "com.quarnel.Tonvale.Mixer";
    const std::string nobody = "/com/quarnel/Tonvale/programs/nobody";
    const struct {
        std::string path;
        std::string method;
        Words arguments;
        const char* error;
    } cases[] = {{player, set, {program, "Volume", "<101>"}, "InvalidArgs"},
                 {player, set, {program, "Volume", "<-1>"}, "InvalidArgs"},
                 {player, set, {program, "Volume", "<'loud'>"}, "InvalidArgs"},
                 {player, set, {program, "Name", "<'other'>"}, "PropertyReadOnly"},
                 {player, set, {program, "Colour", "<1>"}, "UnknownProperty"},
                 {player, read, {program, "Colour"}, "UnknownProperty"},
                 {player, read + "All", {"com.example"}, "UnknownInterface"},
                 {player, program + std::string(".Explode"), {}, "UnknownMethod"},
                 {nobody, program + std::string(".Ignore"), {}, "UnknownObject"},
                 {root, mixer + ".Forget", {"nobody"}, "Tonvale.Error.NoSuchProgram"},
                 {root, mixer + ".Unignore", {"nobody"}, "Tonvale.Error.NoSuchProgram"},
                 {root, mixer + ".SetRemembered", {"x", "200", "false"}, "InvalidArgs"},
                 {root, mixer + ".SetRemembered", {"", "50", "false"}, "NoSuchProgram"},
                 {root, set, {mixer, "DefaultVolume", "<101>"}, "InvalidArgs"},
                 {root, mixer + ".Ignore", {""}, "Tonvale.Error.NoSuchProgram"},
                 {root, set, {mixer, "Ignored", "<['x']>"}, "PropertyReadOnly"}};
    for (const auto& each : cases) {
        const auto answer = gdbus(each.path, each.method, each.arguments);
        EXPECT_NE(answer.status, 0) << each.method;
        EXPECT_TRUE(has(answer.output, each.error)) << each.method << ": " << answer.output;
    }
    EXPECT_EQ(takeCommands(*plugin_, pid), "");
    EXPECT_EQ(get(player, program, "Volume"), "i 100\n");
}

TEST_F(BusToolsTest, TheDesktopActivatesIt) {
    EXPECT_EQ(
        gdbus(root, "org.freedesktop.Application.Activate", {"{'activation-token': <'x'>}"}).status,
        0);
    EXPECT_TRUE(logs("showing the window"));
    const std::string before = log();
    EXPECT_TRUE(does({"show"}));
    EXPECT_TRUE(support::waitUntil([&] { return has(log().substr(before.size()), "the window"); }));
}

TEST(BusStrangersTest, AnotherUserIsRefusedEvenIfTheBusAdmitsIt) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    const support::PrivateFolder folder;
    const std::string address = "unix:abstract=" + (folder.path() / "bus").string();
    std::ofstream(folder.path() / "open.conf")
        << "<busconfig><type>session</type><listen>" << address
        << "</listen><auth>EXTERNAL</auth><policy context='default'><allow user='*'/>"
           "<allow own='*'/><allow send_destination='*'/><allow receive_sender='*'/>"
           "</policy></busconfig>";
    support::ChildProcess daemon({"dbus-daemon", "--nofork", "--print-address",
                                  "--config-file=" + (folder.path() / "open.conf").string()});
    ASSERT_TRUE(support::waitUntil([&] {
        return daemon.output().find("guid=") != std::string::npos;
    })) << daemon.output();
    const support::ScopedVariable variables[] = {{"DBUS_SESSION_BUS_ADDRESS", address},
                                                 {"TONVALE_SOCKET_DIR", folder.path()},
                                                 {"XDG_RUNTIME_DIR", folder.path()}};
    support::ChildProcess tonvale({TONVALE_PROGRAM});
    ASSERT_TRUE(support::waitUntil([] {
        return support::runCommand({TONVALECTL, "list"}).status == 0;
    }));
    const std::string command = "setpriv --reuid=65534 --regid=65534 --clear-groups dbus-send "
                                "--bus=\"$0\" --print-reply --dest=com.quarnel.Tonvale \"$@\"";
    const auto asStranger = [&](const std::string& method, const Words& arguments) {
        Words words{"sh", "-c", command, address, root, method};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return support::runCommand(words).output;
    };
    for (const auto& [method, arguments] : std::vector<std::pair<std::string, Words>>{
             {"org.freedesktop.DBus.ObjectManager.GetManagedObjects", {}},
             {"org.freedesktop.DBus.Introspectable.Introspect", {}},
             {"com.quarnel.Tonvale.Mixer.Ignore", {"string:player"}},
             {"com.quarnel.Tonvale.Mixer.ShowWindow", {}},
             {"org.freedesktop.Application.Activate", {"dict:string:string:"}}}) {
        const std::string output = asStranger(method, arguments);
        EXPECT_NE(output.find("AccessDenied"), std::string::npos) << method << ": " << output;
    }
    EXPECT_EQ(support::runCommand({TONVALECTL, "unignore", "player"}).status, 4)
        << "nothing has come of it";
}
