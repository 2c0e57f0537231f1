#include "helper/TrayRegistration.h"

#include "helper/TrayScene.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>

using support::waitUntil;

TEST(TrayRegistration, RegistersAnewWithEachWatcherAndHostThatComes) {
    const support::BusConnection ours(trayBus().address());
    int changes = 0;
    TrayRegistration registration(*ours, [&] { ++changes; });
    EXPECT_FALSE(registration.isShown());
    const QString name = ours->baseService();
    std::optional<ScriptedWatcher> watcher(std::in_place, false);
    EXPECT_TRUE(waitUntil([&] { return watcher->items == QStringList{name}; })) << "a late watcher";
    EXPECT_FALSE(registration.isShown()) << "it has no host";

    for (int hosts = 1; hosts <= 2; ++hosts) {
        watcher->hasHost = true;
        Q_EMIT watcher->StatusNotifierHostRegistered();
        EXPECT_TRUE(waitUntil([&] { return watcher->items.size() == 1 + hosts; }));
        EXPECT_TRUE(registration.isShown());
    }
    Q_EMIT watcher->StatusNotifierHostUnregistered();
    support::serveEvents();
    EXPECT_TRUE(registration.isShown()) << "the other is still there";
    watcher->hasHost = false;
    Q_EMIT watcher->StatusNotifierHostUnregistered();
    EXPECT_TRUE(waitUntil([&] { return !registration.isShown(); }));

    watcher.reset();
    watcher.emplace(true);
    EXPECT_TRUE(waitUntil([&] { return registration.isShown(); })) << "a restarted watcher";
    EXPECT_EQ(watcher->items, QStringList{name});
    watcher.reset();
    EXPECT_TRUE(waitUntil([&] { return !registration.isShown(); }));
    EXPECT_EQ(changes, 4);
}

TEST(TrayRegistration, KnowsWhoseDialectTheWatcherSpeaks) {
    const support::BusConnection ours(trayBus().address());
    const TrayRegistration registration(*ours, [] {});
    char before[16] = {};
    ::prctl(PR_GET_NAME, before);
    ::prctl(PR_SET_NAME, "gnome-shell");
    {
        const ScriptedWatcher watcher(true);
        EXPECT_TRUE(waitUntil([&] { return registration.watcherProcess() == "gnome-shell"; }));
    }
    ::prctl(PR_SET_NAME, before);
    EXPECT_TRUE(waitUntil([&] { return registration.watcherProcess().isEmpty(); }));
}
