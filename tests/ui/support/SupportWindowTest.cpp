#include "ui/support/SupportWindow.h"

#include "platform/loop/MainQueue.h"
#include "platform/loop/RunLoop.h"
#include "platform/qtloop/RunLoopNotifier.h"
#include "support/ChildProcess.h"
#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include <fstream>

using support::waitUntil;

namespace {

class SupportWindowTest : public testing::Test {
  public:
    ~SupportWindowTest() override {
        delete window;
        support::serveEvents();
    }

  protected:
    void open(const std::string& server = "support.invalid") {
        SupportWindow::Dependencies dependencies;
        dependencies.sources = {[] { return QStringList{"Tonvale"}; },
                                [](bool brief) { return QString(brief ? "brief" : "full"); },
                                [] { return QString(); }, [this](const auto&) { return systemLog; },
                                [](const auto&) { return QString("sample at 10.1.2.3"); }};
        const std::filesystem::path contents = folder.path() / "A.app/Contents";
        std::filesystem::create_directories(contents);
        std::ofstream(contents / "Info.plist")
            << "<plist version=\"1.0\"><dict><key>CFBundleName</key><string>Tonvale</string>"
               "<key>SupportServer</key><string>"
            << server << "</string></dict></plist>";
        dependencies.bundle = platform::Bundle(contents);
        dependencies.storeHandler = [](QNSupportLogStore& store) {
            store.addText("own log", "Tonvale.log");
        };
        dependencies.chooseFile = [this](QWidget*, const QString& name) {
            suggestion = name;
            return chosen;
        };
        window = new SupportWindow(dependencies);
        window->show();
    }
    void openAndCollect(const std::string& server = "support.invalid") {
        open(server);
        ASSERT_TRUE(waitUntil([this] { return button("Save…")->isEnabled(); }));
    }

    QPushButton* button(const QString& begin) const {
        for (auto* const one : window->findChildren<QPushButton*>()) {
            if (one->text().startsWith(begin))
                return one;
        }
        return nullptr;
    }
    QString status() const { return window->findChild<QLabel*>("status")->text(); }
    QTreeWidget& list() const { return *window->findChild<QTreeWidget*>(); }
    QTreeWidgetItem* entry(const QString& name) const {
        const auto found = list().findItems(name, Qt::MatchExactly);
        return found.isEmpty() ? nullptr : found.first();
    }
    QString shownContent(const QString& name) const {
        list().setCurrentItem(entry(name));
        return list().parentWidget()->findChild<QPlainTextEdit*>()->toPlainText();
    }
    QCheckBox* option(int number) const { return window->findChildren<QCheckBox*>()[number]; }

    const support::PrivateFolder folder;
    platform::RunLoop loop;
    const platform::MainQueueService mainQueue{loop};
    const platform::RunLoopNotifier notifier{loop};
    QPointer<SupportWindow> window;
    std::optional<QString> systemLog = "journal";
    QString suggestion;
    QString chosen = QString::fromStdString(folder.path() / "saved.xar");
};

} // namespace

TEST_F(SupportWindowTest, ShowsAllThatWouldBeSent) {
    open();
    EXPECT_EQ(status(), "Collecting data…");
    EXPECT_FALSE(button("Save…")->isEnabled());
    ASSERT_TRUE(waitUntil([this] { return button("Save…")->isEnabled(); }));
    EXPECT_EQ(list().topLevelItemCount(), 5);
    EXPECT_EQ(shownContent("Samples/Tonvale.txt"), "sample at [ip]");
    EXPECT_EQ(entry("Samples/Tonvale.txt")->text(1), "14 bytes");
    EXPECT_EQ(shownContent("System Profile.txt"), "brief");
    EXPECT_EQ(shownContent("Tonvale.log"), "own log");
    window->findChild<QLineEdit*>()->setText("a@b.example");
    EXPECT_TRUE(shownContent("Info.xml").contains("<email>a@b.example</email>"));
    EXPECT_EQ(button("Send"), nullptr) << "there is no server";
    EXPECT_TRUE(button("Save…")->isDefault());
    EXPECT_FALSE(option(0)->isChecked());
    EXPECT_FALSE(option(1)->isChecked());
}

TEST_F(SupportWindowTest, OptionsCollectAnewAndKeepWhatIsLeftOut) {
    systemLog.reset();
    openAndCollect();
    const auto labels = window->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(labels.begin(), labels.end(), [](QLabel* label) {
        return label->text() == "The system's log has nothing about this program.";
    }));
    entry("Tonvale.log")->setCheckState(0, Qt::Unchecked);
    option(0)->click();
    ASSERT_TRUE(waitUntil([this] { return entry("System Profile.spx") != nullptr; }));
    EXPECT_EQ(shownContent("System Profile.spx"), "full");
    EXPECT_EQ(entry("System Profile.txt"), nullptr);
    EXPECT_EQ(entry("Tonvale.log")->checkState(0), Qt::Unchecked);
}

TEST_F(SupportWindowTest, SavesWhatIsChecked) {
    openAndCollect();
    entry("Tonvale.log")->setCheckState(0, Qt::Unchecked);
    button("Save…")->click();
    ASSERT_TRUE(waitUntil([this] { return status().startsWith("Saved"); }));
    EXPECT_EQ(status(), "Saved as " + chosen);
    EXPECT_TRUE(suggestion.endsWith(".xar"));
    EXPECT_EQ(support::modeOf(chosen.toStdString()), 0600U);
    const auto names = support::runCommand({"bsdtar", "-tf", chosen.toStdString()});
    EXPECT_EQ(names.output.find("Tonvale.log"), std::string::npos) << names.output;
    EXPECT_NE(names.output.find("Samples/Tonvale.txt"), std::string::npos) << names.output;

    chosen = "/nowhere/x.xar";
    button("Save…")->click();
    ASSERT_TRUE(waitUntil([this] { return status().startsWith("Couldn't"); }));
    chosen.clear();
    button("Save…")->click();
    EXPECT_TRUE(button("Save…")->isEnabled()) << "it was cancelled";
}

TEST_F(SupportWindowTest, SendsToTheServerThatItNames) {
    const struct {
        const char* reply;
        const char* status;
    } cases[] = {{"true", "Thank you!"},
                 {"false", "An error occurred while sending. Please try again."}};
    for (const auto& one : cases) {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
        QTcpSocket* socket = nullptr;
        QObject::connect(&server, &QTcpServer::newConnection,
                         [&] { socket = server.nextPendingConnection(); });
        openAndCollect("127.0.0.1:" + std::to_string(server.serverPort()));
        ASSERT_NE(button("Send to 127.0.0.1"), nullptr);
        EXPECT_EQ(socket, nullptr) << "nothing is sent before";
        button("Send to")->click();
        ASSERT_TRUE(waitUntil([this] { return status() == "Waiting for the server…"; }));
        ASSERT_TRUE(waitUntil([&] { return socket != nullptr && socket->bytesAvailable() > 0; }));
        EXPECT_FALSE(button("Send to")->isEnabled());
        socket->write(QByteArray("HTTP/1.1 200 OK\r\nContent-Length: ") +
                      QByteArray::number(qstrlen(one.reply)) + "\r\n\r\n" + one.reply);
        ASSERT_TRUE(waitUntil([this] { return button("Save…")->isEnabled(); }));
        EXPECT_EQ(status(), one.status);
        delete window;
    }
}

TEST_F(SupportWindowTest, CancelsAtAnyTime) {
    open();
    button("Cancel")->click();
    ASSERT_TRUE(waitUntil([this] { return window.isNull(); }));

    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    openAndCollect("127.0.0.1:" + std::to_string(server.serverPort()));
    button("Send to")->click();
    ASSERT_TRUE(waitUntil([this] { return status() == "Waiting for the server…"; }));
    button("Cancel")->click();
    ASSERT_TRUE(waitUntil([this] { return window.isNull(); }));
    support::serveEvents();
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"*.xar"}).isEmpty());
}
