#include "platform/bus/ProgramLauncher.h"

#include "support/BusConnection.h"
#include "support/Files.h"
#include "support/PrivateBus.h"
#include "support/PrivateFolder.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusVirtualObject>

#include <fstream>
#include <optional>

using platform::ProgramLauncher;
using support::waitUntil;

namespace {

/// Stands for systemd's manager: keeps the calls, and accepts or refuses them.
class Manager : public QDBusVirtualObject {
  public:
    explicit Manager(const std::string& address) : bus_(address) {
        bus_->registerVirtualObject("/org/freedesktop/systemd1", this);
        bus_->registerService("org.freedesktop.systemd1");
    }

    QString introspect(const QString& /*path*/) const override { return {}; }

    bool handleMessage(const QDBusMessage& call, const QDBusConnection& bus) override {
        calls.push_back(call);
        bus.send(accepts ? call.createReply(QVariant::fromValue(QDBusObjectPath("/job")))
                         : call.createErrorReply("org.example.No", "no"));
        return true;
    }

    bool accepts = true;
    std::vector<QDBusMessage> calls;

  private:
    support::BusConnection bus_;
};

/// A script that leaves a variable.
std::string makeProgram(const std::filesystem::path& folder) {
    const auto program = folder / "program";
    std::ofstream(program) << "#!/bin/sh\necho \"$TOKEN\" >'" << folder.string() << "/started'\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    return program;
}

/// The reason of a failure.
QString launch(ProgramLauncher& launcher, const std::string& program) {
    std::optional<QString> error;
    launcher.launch({.name = "org.example.X-Y",
                     .program = QString::fromStdString(program),
                     .variables = {"TOKEN=a=b"}},
                    [&](const QString& answer) { error = answer; });
    EXPECT_TRUE(waitUntil([&] { return error.has_value(); }));
    return error.value_or("no answer");
}

} // namespace

TEST(ProgramLauncher, LeavesTheStartToTheServiceManager) {
    const support::PrivateBus bus;
    const support::PrivateFolder folder;
    const support::BusConnection ours(bus.address());
    Manager manager(bus.address());
    ProgramLauncher launcher(*ours);
    const std::string program = makeProgram(folder.path());
    EXPECT_EQ(launch(launcher, program), QString());
    EXPECT_EQ(launch(launcher, program), QString());
    ASSERT_EQ(manager.calls.size(), 2U);
    EXPECT_EQ(manager.calls[0].member(), "StartTransientUnit");
    EXPECT_EQ(manager.calls[0].signature(), "ssa(sv)a(sa(sv))");
    const QString unit = manager.calls[0].arguments()[0].toString();
    EXPECT_TRUE(unit.startsWith("app-org.example.X\\x2dY@")) << unit.toStdString();
    EXPECT_TRUE(unit.endsWith(".service"));
    EXPECT_NE(unit, manager.calls[1].arguments()[0].toString());
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "started"));

    manager.accepts = false;
    EXPECT_EQ(launch(launcher, program), QString());
    EXPECT_TRUE(
        waitUntil([&] { return support::contentOf(folder.path() / "started") == "a=b\n"; }));
}

TEST(ProgramLauncher, StartsASessionOfItsOwnWithoutAManager) {
    const support::PrivateFolder folder;
    ProgramLauncher launcher(QDBusConnection("no such bus"));
    EXPECT_EQ(launch(launcher, makeProgram(folder.path())), QString());
    EXPECT_TRUE(
        waitUntil([&] { return support::contentOf(folder.path() / "started") == "a=b\n"; }));
    EXPECT_NE(launch(launcher, folder.path() / "missing"), QString());
    EXPECT_NE(launch(launcher, folder.path()), QString());
}
