#include "app/CrashReports.h"

#include "framework/crash/CrashFinisher.h"
#include "framework/crash/CrashReporterWindow.h"
#include "framework/support/HttpServer.h"
#include "platform/crash/CrashFolder.h"
#include "platform/crash/Sanitizers.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "settings/PreferenceKeys.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/ScopedVariable.h"
#include "support/WaitUntil.h"
#include "ui/support/ContentWindow.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QTreeWidget>

#include <csignal>
#include <fstream>

using support::waitUntil;

namespace {

CrashReporterWindow* reporterWindow() {
    for (QWidget* const each : QApplication::topLevelWidgets()) {
        auto* const window = qobject_cast<CrashReporterWindow*>(each);
        if (window != nullptr && window->isVisible())
            return window;
    }
    return nullptr;
}

class CrashReportsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (platform::isSanitized)
            GTEST_SKIP() << "the sanitizer handles crashes";
        if (!TONVALE_HAS_CRASH_COMMAND)
            GTEST_SKIP() << "this plug-in is what people run";
        defaults.registerDefaults(PreferenceKeys::defaults());
        write("Tonvale.log", "own log");
        write("Tonvale0.log", "older log");
        write("A.app/Contents/Info.plist",
              "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Tonvale</string>"
              "<key>CFBundleShortVersionString</key><string>1.2</string>"
              "<key>SupportServer</key><string>127.0.0.1:" +
                  std::to_string(http.serverPort()) + "</string></dict></plist>");
    }

    CrashReports::Dependencies dependencies() {
        return {defaults,
                QString::fromStdString(folder.path() / "Tonvale.log"),
                {"TNInstaller"},
                {[] {
                     return QStringList{"Tonvale", "TonvalePlugin"};
                 },
                 [](bool) { return QString("profile"); }, [] { return QString(); },
                 [](const auto&) { return QString("log"); },
                 [](const auto&) { return std::nullopt; }},
                platform::Bundle(folder.path() / "A.app/Contents")};
    }

    void write(const std::string& name, const std::string& content) const {
        std::filesystem::create_directories((folder.path() / name).parent_path());
        std::ofstream(folder.path() / name) << content;
    }

    static void crashPlugin() {
        EXPECT_EQ(support::runCommand({TONVALE_PLUGIN, "--crash"}).status, 128 + SIGSEGV);
    }

    static bool waitForOffer() {
        return waitUntil([] { return reporterWindow() != nullptr; });
    }

    /// The names and contents in the archive that the server has received.
    std::string received() const {
        const QByteArray body = http.body();
        const qsizetype begin = body.indexOf("xar!");
        const std::filesystem::path file = folder.path() / "received.xar";
        std::ofstream(file, std::ios::binary) << body.mid(begin).toStdString();
        const std::filesystem::path target = folder.path() / "received";
        std::filesystem::create_directory(target);
        EXPECT_EQ(support::runCommand({"bsdtar", "-xf", file, "-C", target}).status, 0);
        std::string all;
        for (const auto& each : std::filesystem::directory_iterator(target))
            all += each.path().filename().string() + "\n" + support::contentOf(each.path());
        return all;
    }

    const support::PrivateFolder folder;
    const support::ScopedVariable state{"XDG_STATE_HOME", folder.path() / "state"};
    HttpServer http{HttpServer::Behaviour::answer, HttpServer::replyOf("200 OK", "true")};
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const platform::RunLoopNotifier notifier{loop};
    platform::UserDefaults defaults{{}};
};

} // namespace

/// From the bad access to the server.
TEST_F(CrashReportsTest, APluginThatDiesWhileTheApplicationRunsIsReported) {
    CrashReports reports(dependencies());
    reports.begin(true);
    crashPlugin();
    ASSERT_TRUE(waitForOffer());
    reporterWindow()->contentButton().click();
    auto* const content = reporterWindow()->findChild<ContentWindow*>();
    ASSERT_NE(content, nullptr);
    auto* const entries = content->findChild<QTreeWidget*>();
    ASSERT_TRUE(waitUntil([&] { return entries->topLevelItemCount() == 6; }));
    content->close();
    reporterWindow()->sendButton().click();
    ASSERT_TRUE(waitUntil([this] { return http.requests() == 1; }));
    ASSERT_TRUE(waitUntil([] { return reporterWindow() == nullptr; }));
    const std::string archive = received();
    for (const char* const each :
         {"TonvalePlugin_", "crash()", "SIGSEGV (Segmentation fault)", "build id ",
          "<isCrashReport>true</isCrashReport>", "own log", "older log", "profile"})
        EXPECT_NE(archive.find(each), std::string::npos) << each << " in\n" << archive;
    EXPECT_EQ(archive.find("[token]"), std::string::npos) << archive;
}

TEST_F(CrashReportsTest, WhatHasHappenedBeforeIsOfferedIfWanted) {
    crashPlugin();
    {
        CrashReports reports(dependencies());
        reports.begin(false);
        ASSERT_TRUE(waitUntil([] { return !CrashFinisher(platform::crashFolder()).hasRecords(); }));
        reports.reportSignal("TNInstaller", SIGBUS);
        ASSERT_TRUE(waitForOffer()) << "of the new one";
        crashPlugin();
        EXPECT_TRUE(waitUntil([] { return !CrashFinisher(platform::crashFolder()).hasRecords(); }));
        reporterWindow()->cancelButton().click();
        ASSERT_TRUE(waitForOffer()) << "of what came meanwhile";
        reporterWindow()->cancelButton().click();
    }
    EXPECT_EQ(reporterWindow(), nullptr);
    EXPECT_EQ(defaults.list(PreferenceKeys::crashReports).size(), 3);
}

TEST_F(CrashReportsTest, PreferencesEndWritingAndAsking) {
    CrashReports reports(dependencies());
    reports.addFolder(QString::fromStdString(folder.path() / "early"));
    reports.begin(true);
    defaults.set(PreferenceKeys::offerCrashReports, false);
    crashPlugin();
    const std::string own = platform::crashFolder();
    EXPECT_TRUE(waitUntil([&] { return !std::filesystem::is_empty(own); }));
    defaults.set(PreferenceKeys::writeCrashReports, false);
    ASSERT_TRUE(waitUntil([&] { return !platform::isCrashWritingOn(own); }));
    EXPECT_TRUE(waitUntil([&] { return !CrashFinisher(own).hasRecords(); }));
    crashPlugin();
    EXPECT_FALSE(CrashFinisher(own).hasRecords());
    defaults.set(PreferenceKeys::writeCrashReports, true);
    ASSERT_TRUE(waitUntil([&] { return platform::isCrashWritingOn(own); }));
    EXPECT_EQ(reporterWindow(), nullptr);
    defaults.set(PreferenceKeys::offerCrashReports, true);
    write("plugin/TonvalePlugin_1.crash", "of other surroundings");
    reports.addFolder(QString::fromStdString(folder.path() / "plugin"));
    ASSERT_TRUE(waitForOffer());
    reporterWindow()->cancelButton().click();
    write("early/TonvalePlugin_1.crash", "of a folder that was known from the start");
    ASSERT_TRUE(waitForOffer());
    reporterWindow()->cancelButton().click();
}
