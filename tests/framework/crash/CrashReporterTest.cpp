#include "framework/crash/QNCrashReporter.h"

#include "framework/crash/CrashReporterWindow.h"
#include "framework/support/HttpServer.h"
#include "platform/defaults/UserDefaults.h"
#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "platform/window/Alert.h"
#include "settings/PreferenceKeys.h"
#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

using support::waitUntil;

namespace {

/// Keeps alerts instead of showing them.
class Alerts final : public platform::AlertPresenter {
  public:
    Alerts() { platform::replaceAlertPresenter(this); }
    ~Alerts() override { platform::replaceAlertPresenter(nullptr); }

    platform::Alert::Button run(const platform::Alert& alert) override {
        ADD_FAILURE() << "no sheet: " << alert.title.toStdString();
        return platform::Alert::alternate;
    }
    void showOn(const platform::Alert& alert, QWidget& /*window*/) override {
        shown.push_back(alert);
    }

    std::vector<platform::Alert> shown;
};

class CrashReporterTest : public testing::Test {
  protected:
    CrashReporterTest() { QCoreApplication::setApplicationName("Player"); }

    QNCrashReporter::Dependencies dependencies() {
        const std::filesystem::path contents = folder.path() / "A.app/Contents";
        std::filesystem::create_directories(contents);
        std::ofstream(contents / "Info.plist")
            << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Tonvale</string>"
               "<key>SupportServer</key><string>"
            << server << "</string></dict></plist>";
        return {defaults,
                [this](const QStringList& names) {
                    ++looks;
                    namesAsked = names;
                    return reports.isEmpty() ? std::nullopt : std::optional(reports);
                },
                {[] { return QStringList{"Tonvale"}; }, [](bool) { return QString("profile"); },
                 [] { return QString(); }, [](const auto&) { return std::nullopt; },
                 [](const auto&) { return QString("sample"); }},
                platform::Bundle(contents),
                nullptr,
                [this](QWidget*, const QString&) { return chosen; }};
    }

    void make() { reporter = std::make_unique<QNCrashReporter>(dependencies()); }

    /// Looks, and waits for what comes of it.
    bool offers() {
        make();
        looks = 0;
        reporter->showWindowIfNewCrashReportsExists();
        reporter->showWindowIfNewCrashReportsExists(); // looks once only
        EXPECT_TRUE(waitUntil([&] { return reporter->hasLooked(); }));
        EXPECT_EQ(looks, 1);
        return reporter->isOffering();
    }

    /// A report of so many seconds ago.
    QString report(const std::string& name, std::chrono::seconds age) {
        const std::filesystem::path path = folder.path() / name;
        std::ofstream(path) << "content of " << name;
        std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now() - age);
        reports.append(QString::fromStdString(path));
        return reports.last();
    }

    QPushButton& sendButton() const { return reporter->window().sendButton(); }

    const support::PrivateFolder folder;
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const platform::RunLoopNotifier notifier{loop};
    platform::UserDefaults defaults{{}};
    std::string server = "127.0.0.1:9";
    QStringList reports;
    std::atomic<int> looks{0};
    QStringList namesAsked;
    QString chosen = QString::fromStdString(folder.path() / "saved.xar");
    std::unique_ptr<QNCrashReporter> reporter;
};

} // namespace

TEST_F(CrashReporterTest, WithoutNewReportsThereIsNoWindow) {
    EXPECT_FALSE(offers());
    EXPECT_EQ(namesAsked, QStringList{"Tonvale"});
    report("Tonvale_1.crash", std::chrono::hours(25));
    EXPECT_FALSE(offers()) << "a day is over";
}

TEST_F(CrashReporterTest, AReportIsOfferedOnce) {
    const QString path = report("Tonvale_1.crash", std::chrono::hours(23));
    ASSERT_TRUE(offers());
    EXPECT_EQ(reporter->window().messageTextField().text(),
              "Player, or a part of it, has ended unexpectedly.");
    EXPECT_TRUE(reporter->supportLog().isCrashReport());
    EXPECT_TRUE((reporter->window().windowFlags() & Qt::WindowStaysOnTopHint) != 0);
    QTest::keyClick(&reporter->window(), Qt::Key_Return);
    EXPECT_TRUE(reporter->isOffering());
    reporter->window().cancelButton().click();
    EXPECT_FALSE(reporter->isOffering());
    const QVariantList seen = defaults.list("QNCrashReporter_Reports");
    ASSERT_EQ(seen.size(), 1);
    EXPECT_EQ(seen[0].toMap().value("QNReportPath"), path);
    EXPECT_EQ(seen[0].toMap().value("QNReportDate").typeId(), QMetaType::QDateTime);
    EXPECT_FALSE(offers());
    report("TonvalePlugin_2.crash", std::chrono::seconds(0));
    ASSERT_TRUE(offers());
    QTest::keyClick(&reporter->window(), Qt::Key_Escape);
    EXPECT_EQ(defaults.list("QNCrashReporter_Reports").size(), 2);
    reports = {path};
    report("Tonvale_1.crash", std::chrono::hours(1));
    EXPECT_TRUE(offers()) << "another one of the same name";
}

TEST_F(CrashReporterTest, AskingCanBeSwitchedOff) {
    defaults.registerDefaults(PreferenceKeys::defaults());
    report("Tonvale_1.crash", std::chrono::seconds(0));
    ASSERT_TRUE(offers());
    EXPECT_FALSE(reporter->window().dontAskAgain().isChecked());
    reporter->window().dontAskAgain().click();
    EXPECT_TRUE(defaults.boolean(PreferenceKeys::offerCrashReports));
    reporter->window().cancelButton().click();
    EXPECT_FALSE(defaults.boolean(PreferenceKeys::offerCrashReports));
}

TEST_F(CrashReporterTest, SendsWhatWasWrittenAndThanks) {
    HttpServer http(HttpServer::Behaviour::answer, HttpServer::replyOf("200 OK", "true"));
    server = "127.0.0.1:" + std::to_string(http.serverPort());
    report("Tonvale_1.crash", std::chrono::seconds(1));
    ASSERT_TRUE(offers());
    const CrashReporterWindow& window = reporter->window();
    EXPECT_EQ(sendButton().text(), "Send");
    window.emailField().setText("me@example.org");
    window.commentsField().setPlainText("it rang");
    sendButton().click();
    for (const QWidget* const each :
         {static_cast<QWidget*>(&window.cancelButton()), static_cast<QWidget*>(&sendButton()),
          static_cast<QWidget*>(&window.commentsField()),
          static_cast<QWidget*>(&window.emailField())})
        EXPECT_FALSE(each->isEnabled());
    EXPECT_TRUE(window.progressBar().isVisible());
    EXPECT_EQ(defaults.text("QNCrashReporter_Email"), "me@example.org");
    ASSERT_TRUE(waitUntil([&] { return window.statusField().text() == "Thank you!"; }));
    EXPECT_FALSE(window.progressBar().isVisible());
    EXPECT_TRUE(http.body().contains("Tonvale-CrashReport-"));
    EXPECT_TRUE(waitUntil([&] { return !reporter->isOffering(); })) << "after 1.5 s";
    EXPECT_EQ(defaults.list("QNCrashReporter_Reports").size(), 1);
    make();
    EXPECT_EQ(reporter->window().emailField().text(), "me@example.org");
}

TEST_F(CrashReporterTest, AFailureLeavesTheWindowForAnotherTry) {
    const Alerts alerts;
    HttpServer http(HttpServer::Behaviour::answer, HttpServer::replyOf("200 OK", "true\n"));
    server = "127.0.0.1:" + std::to_string(http.serverPort());
    report("Tonvale_1.crash", std::chrono::seconds(1));
    ASSERT_TRUE(offers());
    sendButton().click();
    ASSERT_TRUE(waitUntil([&] { return !alerts.shown.empty(); }));
    EXPECT_EQ(alerts.shown[0].title, "An error occurred while sending.");
    EXPECT_EQ(alerts.shown[0].message, "Please try again.");
    EXPECT_TRUE(sendButton().isEnabled());
    EXPECT_TRUE(reporter->isOffering());
    EXPECT_EQ(reporter->window().statusField().text(), "");
    EXPECT_TRUE(defaults.list("QNCrashReporter_Reports").isEmpty());
}

TEST_F(CrashReporterTest, WithoutAServerItIsSavedAndCountsAsSeen) {
    server = "support.invalid";
    report("Tonvale_1.crash", std::chrono::seconds(1));
    ASSERT_TRUE(offers());
    EXPECT_EQ(sendButton().text(), "Save…");
    sendButton().click();
    ASSERT_TRUE(
        waitUntil([&] { return reporter->window().statusField().text() == "Saved as " + chosen; }));
    EXPECT_EQ(defaults.list("QNCrashReporter_Reports").size(), 1);
    const auto content = support::runCommand({"bsdtar", "-xOf", chosen.toStdString()});
    EXPECT_NE(content.output.find("content of Tonvale_1.crash"), std::string::npos);
    EXPECT_EQ(content.output.find("sample"), std::string::npos);
}
