#include "HttpServer.h"
#include "SupportLogFixture.h"
#include "framework/redaction/Redactor.h"
#include "framework/support/XarArchive.h"

#include "platform/text/Format.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QWidget>

#include <csignal>
#include <random>
#include <sys/resource.h>
#include <unistd.h>

using support::waitUntil;

namespace {

QStringList childrenOf(const std::string& xml) {
    QStringList children;
    const auto matches =
        QRegularExpression("^    <(\\w+)>([^<\\n]*)", QRegularExpression::MultilineOption)
            .globalMatch(QString::fromStdString(xml));
    for (const auto& match : matches)
        children.append(match.captured(1) + '=' + match.captured(2));
    return children;
}

/// While it lives, files cannot grow beyond some size: writing fails as on a full disk.
class SmallDisk {
  public:
    explicit SmallDisk(rlim_t bytes) : action_(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, action_);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

  private:
    rlimit before_{};
    void (*action_)(int);
};

std::string randomText(std::size_t size) {
    std::mt19937 random(static_cast<unsigned>(size));
    std::string text(size, ' ');
    for (char& byte : text)
        byte = static_cast<char>(' ' + random() % 90);
    return text;
}

} // namespace

TEST_F(SupportLogTest, OtherProgramsReadEveryEntry) {
    const Redactor nobody;
    Entries expected{{"a.txt", "text"},
                     {"Samples/Tonvale.txt", randomText(300000)},
                     {"a (2).txt", "again"},
                     {"grün/ü.txt", "umlaut"},
                     {"empty", ""},
                     {"null", "(null)"},
                     {"binary.png", std::string("\0\x89PNG", 5)}};
    QNSupportLogStore store("Tonvale", QDateTime::fromSecsSinceEpoch(1700000000), false, nobody);
    EXPECT_EQ(store.path(), QDir::tempPath() + "/Tonvale-SupportInfo-1700000000.xar");
    EXPECT_EQ(support::modeOf(store.path().toStdString()), 0600U);
    store.addText("text", "a.txt");
    store.addUnchanged(QByteArray::fromStdString(expected["Samples/Tonvale.txt"]),
                       "Samples/Tonvale.txt");
    store.addText("again", "a.txt");
    store.addText("umlaut", QString::fromUtf8("grün/ü.txt"));
    store.addData("", "empty");
    store.addText({}, "null");
    store.addData(QByteArray("\0\x89PNG", 5), "binary.png");
    ASSERT_TRUE(store.close());
    const QByteArray archive =
        QByteArray::fromStdString(support::contentOf(store.path().toStdString()));
    EXPECT_EQ(extract(archive, {"bsdtar", "-xf"}), expected);
    EXPECT_EQ(extract(archive, {"7zz", "x"}), expected);
    const auto list = support::runCommand({"bsdtar", "-tvf", store.path().toStdString()});
    EXPECT_EQ(list.output.find("1970"), std::string::npos) << list.output;
}

TEST_F(SupportLogTest, NamesOfEntriesAreSafe) {
    const QString longName(300, 'x');
    const struct {
        QString name;
        QString safe;
    } cases[] = {{"/etc/passwd", "etc/passwd"},
                 {"../../x", "_/_/x"},
                 {"a//./b", "a/_/b"},
                 {"a\\b\n", "a_b_"},
                 {"", "_"},
                 {"///", "_"}};
    for (const auto& one : cases)
        EXPECT_EQ(EntryWriter::safeName(one.name), one.safe);
    EXPECT_LT(EntryWriter::safeName(longName).toUtf8().size(), 255);
}

TEST_F(SupportLogTest, FoldersAreAddedWithoutWhatIsHidden) {
    write("reports/a.crash", "a");
    write("reports/deep/b.crash", "b");
    write("reports/.hidden", "no");
    write("reports/.git/x", "no");
    write("secret", "no");
    write("cut.log", std::string("\0"
                                 "10.0.0.1\n",
                                 10));
    std::filesystem::create_symlink(folder.path() / "secret", folder.path() / "reports/link");
    ::mkfifo((folder.path() / "reports/pipe").c_str(), 0600);
    const Redactor nobody;
    QNSupportLogStore store("Tonvale", QDateTime::currentDateTime(), true, nobody);
    EXPECT_TRUE(store.path().contains("/Tonvale-CrashReport-"));
    store.addPath(path("reports/"));
    store.addPath(path("reports/a.crash"));
    store.addPath(path("missing"));
    store.addPath(path("cut.log"));
    ASSERT_TRUE(store.close());
    EXPECT_EQ(extract(QByteArray::fromStdString(support::contentOf(store.path().toStdString()))),
              (Entries{{"reports/a.crash", "a"},
                       {"reports/deep/b.crash", "b"},
                       {"a.crash", "a"},
                       {"cut.log", std::string("\0[ip]\n", 6)}}));
    EXPECT_TRUE(log.contains("missing"));
}

TEST_F(SupportLogTest, CollectsAllPartsWithTheirRecord) {
    QNSupportLog report(plainSources(), bundle());
    report.setUserEmail(" a@b.example ");
    report.setUserComment("\n<It> broke & I\x01 cried\n");
    report.setHandler([](QNSupportLogStore& store) { store.addText("own", "Tonvale.log"); });
    const QVariantMap file = archiveOf(report);
    EXPECT_TRUE(QRegularExpression("^Tonvale-SupportInfo-[0-9]{10}\\.xar$")
                    .match(file["QNUploaderPostFileName"].toString())
                    .hasMatch());
    Entries entries = extract(file);
    const std::string info = entries["Info.xml"];
    entries.erase("Info.xml");
    EXPECT_EQ(entries, (Entries{{"Tonvale.log", "own"},
                                {"System Profile.txt", "brief"},
                                {"System Log (filtered).txt", "log of Tonvale"},
                                {"Samples/Tonvale.txt", "sample of Tonvale"}}));
    const QStringList children = childrenOf(info);
    ASSERT_EQ(children.size(), 10) << info;
    EXPECT_EQ(children.mid(0, 3), (QStringList{"isCrashReport=false", "email=a@b.example",
                                               "comment=&lt;It&gt; broke &amp; I cried"}));
    EXPECT_TRUE(children[3].startsWith("date=1"));
    EXPECT_EQ(children.mid(4), (QStringList{"product=Tonvale", "version=1.2", "build=34",
                                            "buildID=abc", "buildTimestamp=99", "redactions="}));
    EXPECT_EQ(QString::fromStdString(info).trimmed(), QString::fromStdString(info));
    EXPECT_EQ(statuses, (QStringList{"1 Collecting data…", "1 Collecting data (17%)…",
                                     "1 Collecting data (33%)…", "1 Collecting data (50%)…",
                                     "1 Collecting data (67%)…", "1 Collecting data (83%)…",
                                     "1 Collecting data (100%)…"}));
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"*.xar"}).isEmpty());
}

TEST_F(SupportLogTest, CrashReportsHaveNoSamples) {
    write("Tonvale.crash", "it crashed");
    write("syslog", "whole log");
    SupportSources sources = plainSources();
    sources.systemLogPath = [this] { return path("syslog"); };
    QNSupportLog report(sources, bundle());
    report.addCrashReport(path("Tonvale.crash"));
    report.setUseFullSystemLog(true);
    report.setUseFullSystemProfile(true);
    Entries entries = extract(archiveOf(report));
    const QStringList children = childrenOf(entries["Info.xml"]);
    EXPECT_EQ(children[0], "isCrashReport=true");
    EXPECT_TRUE(children[1].startsWith("date="));
    entries.erase("Info.xml");
    EXPECT_EQ(entries, (Entries{{"Tonvale.crash", "it crashed"},
                                {"syslog", "whole log"},
                                {"System Profile.spx", "full"}}));
}

TEST_F(SupportLogTest, FailingCollectorsAddNothing) {
    const auto none = [](const auto&) { return std::optional<QString>(); };
    const auto thrower = [](const auto&) -> std::optional<QString> {
        throw std::runtime_error("collector");
    };
    const SupportSources empty{[] { return QStringList{"a"}; }, none, [] { return QString(); },
                               none, none};
    SupportSources throwing{[] { return QStringList{"a"}; }, thrower, [] { return QString(); },
                            thrower, thrower};
    for (const SupportSources& sources : {empty, throwing}) {
        QNSupportLog report(sources, bundle());
        report.setHandler([](QNSupportLogStore&) { throw std::runtime_error("handler"); });
        const Entries entries = extract(archiveOf(report));
        EXPECT_EQ(entries.size(), 1U);
        EXPECT_TRUE(entries.contains("Info.xml"));
        EXPECT_TRUE(log.contains("handler"));
    }
    EXPECT_EQ(log.count("collector"), 3U);
    QNSupportLog report(empty, bundle());
    EXPECT_THROW(report.generatePostDictionary({}, [](const auto&) {}), std::invalid_argument);
    EXPECT_THROW(report.submitWithHandler({}), std::invalid_argument);
}

TEST_F(SupportLogTest, ScreenshotsAreNamedAfterTheirWindows) {
    QWidget window;
    QWidget excluded;
    QWidget hidden;
    window.setWindowTitle("a/b:c");
    excluded.setWindowTitle("no");
    window.show();
    excluded.show();
    QNSupportLog report(plainSources(), bundle());
    report.setIncludeAppScreenshots(true);
    report.setWindowsToExcludeFromScreenshots({&excluded});
    Entries entries = extract(archiveOf(report));
    EXPECT_TRUE(entries["Screenshots/a-b-c.png"].starts_with("\x89PNG"));
    EXPECT_FALSE(entries.contains("Screenshots/no.png"));
}

TEST_F(SupportLogTest, WhatTheDiskDoesNotTakeIsNotSent) {
    SupportSources sources = plainSources();
    sources.systemProfile = [](bool) { return QString::fromStdString(randomText(1 << 20)); };
    QNSupportLog report(sources, bundle());
    const SmallDisk disk(100000);
    const QVariantMap file = archiveOf(report);
    EXPECT_EQ(file["QNUploaderPostFileData"].toByteArray(), "");
    EXPECT_TRUE(log.contains("support archive"));
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"*.xar"}).isEmpty());
}

/// What names the person and the machine, in everything that is collected and added.
TEST_F(SupportLogTest, NothingPersonalIsInTheArchive) {
    const QString user = QString::fromStdString(platform::PersonalFacts::ofThisMachine().userName);
    const support::ScopedVariable home("HOME", "/home/canaryhome");
    char host[256] = {};
    ::gethostname(host, sizeof(host) - 1);
    QString planted = platform::formatted(
        QStringLiteral("/home/canaryhome/x file:///home/canaryhome/y \"\\/home\\/canaryhome\"\n"
                       "%@@%@ host=%@ 12:34:56:78:9a:bc bluez_card.12_34_56_78_9A_BC 10.9.8.7\n"
                       "fe80::1234:5678:9abc:def0 ssid=CanaryNet\npassword=canarypass\n"
                       "<serial>CANARY123</serial> ghp_canarycanarycanary12\n"
                       "<node id=\"%@\" claimed=\"true\" class=\"system\">\n"),
        user, host, host, host);
    write("Tonvale.crash", planted.toStdString());
    write("logs/Tonvale.log", planted.toStdString());
    write("syslog", planted.toStdString());
    SupportSources sources = plainSources();
    sources.systemProfile = [&](bool) { return planted; };
    sources.systemLogPath = [&] { return path("syslog"); };
    sources.systemLogForProcesses = [&](const auto&) { return planted; };
    sources.sampleProcess = [&](const auto&) { return planted; };
    for (const bool crash : {false, true}) {
        QNSupportLog report(sources, bundle());
        report.setHandler([&](QNSupportLogStore& store) { store.addPath(path("logs")); });
        report.setUseFullSystemLog(crash);
        if (crash)
            report.addCrashReport(path("Tonvale.crash"));
        Entries entries = extract(archiveOf(report));
        EXPECT_EQ(entries.size(), 5U);
        const std::string info = entries["Info.xml"];
        EXPECT_NE(info.find("<macAddress>8</macAddress>"), std::string::npos) << info;
        for (const auto& [name, content] : entries) {
            const QString text = QString::fromStdString(content).toLower();
            for (const QString& canary :
                 {QString("canaryhome"), QString("12:34:56"), QString("12_34_56"),
                  QString("10.9.8.7"), QString("fe80::"), QString("canarynet"),
                  QString("canarypass"), QString("canary123"), QString("canarycanary"), user + '@',
                  QString('@') + host, QString("host=") + host, QString("id=\"") + host})
                EXPECT_FALSE(text.contains(canary.toLower()))
                    << name << " has " << canary.toStdString() << ": " << content;
        }
    }
}

TEST_F(SupportLogTest, TwoReportsAtOnceDoNotMix) {
    SupportSources one = plainSources();
    SupportSources other = plainSources();
    one.systemProfile = [](bool) { return QString("one"); };
    other.systemProfile = [](bool) { return QString("other"); };
    QNSupportLog reports[]{QNSupportLog(one, bundle()), QNSupportLog(other, bundle())};
    QVariantMap files[2];
    for (std::size_t i = 0; i < 2; ++i)
        reports[i].generatePostDictionary(
            [](const auto&, auto) {},
            [&files, i](const auto& form) { files[i] = form["file"].toMap(); });
    ASSERT_TRUE(waitUntil([&] { return !files[0].isEmpty() && !files[1].isEmpty(); }));
    EXPECT_EQ(extract(files[0])["System Profile.txt"], "one");
    EXPECT_EQ(extract(files[1])["System Profile.txt"], "other");
}

TEST_F(SupportLogTest, LeftoversOfEarlierRunsGo) {
    const QDir temporary(QDir::tempPath());
    const QStringList names{
        "Tonvale-SupportInfo-1700000000.xar", "Tonvale-CrashReport-1700000000 (2).xar",
        "Tonvale-SupportInfo-2026-11-27.xar", "Other-SupportInfo-1700000000.xar"};
    for (const QString& name : names)
        std::ofstream(temporary.filePath(name).toStdString()) << "x";
    QNSupportLogStore::removeLeftovers("Tonvale");
    EXPECT_EQ(temporary.entryList({"*.xar"}), (QStringList{names[3], names[2]}));
    for (const QString& name : names)
        QFile::remove(temporary.filePath(name));
}

TEST_F(SupportLogTest, ReviewedEntriesCanBeLeftOut) {
    QNSupportLog report(plainSources(), bundle());
    report.setHandler([](QNSupportLogStore& store) { store.addText("10.0.0.1", "own"); });
    bool collected = false;
    report.collectForReview([](const auto&, auto) {}, [&] { collected = true; });
    ASSERT_TRUE(waitUntil([&] { return collected; }));
    EXPECT_EQ(report.reviewedEntries().size(), 4U);
    EXPECT_TRUE(QDir(QDir::tempPath()).entryList({"*.xar"}).isEmpty());
    report.setLeftOut({"Samples/Tonvale.txt", "System Profile.txt"});
    report.setUserComment("later");
    Entries entries = extract(archiveOf(report));
    EXPECT_EQ(entries["own"], "[ip]");
    EXPECT_EQ(entries.size(), 3U);
    EXPECT_NE(entries["Info.xml"].find("<comment>later</comment>"), std::string::npos);
    EXPECT_NE(entries["Info.xml"].find("<ipAddress>1</ipAddress>"), std::string::npos);
}

TEST_F(SupportLogTest, OnlyTheExactReplyIsSuccess) {
    const struct {
        QByteArray reply;
        const char* last;
    } cases[] = {{"true", "3 "}, {"true\n", "4 "}, {"false", "4 "}, {"", "4 "}};
    for (const auto& one : cases) {
        HttpServer server(HttpServer::Behaviour::answer, HttpServer::replyOf("200 OK", one.reply));
        QNSupportLog report(plainSources(),
                            bundle("127.0.0.1:" + std::to_string(server.serverPort())));
        statuses.clear();
        bool nullText = false;
        report.submitWithHandler([&](const QString& text, unsigned stage) {
            nullText = text.isNull();
            statuses.append(QString::number(stage) + ' ' + text);
        });
        ASSERT_TRUE(waitUntil([&] { return statuses.last()[0] >= '3'; }));
        EXPECT_EQ(statuses.last(), one.last);
        EXPECT_TRUE(nullText);
        EXPECT_TRUE(statuses.contains("2 Sending…"));
        EXPECT_TRUE(statuses.contains("2 Sending (100%)…")) << statuses.join('|').toStdString();
        EXPECT_TRUE(server.head().startsWith("POST /resources/supportlogs/api.php "));
    }
}

TEST_F(SupportLogTest, TheServerIsThatOfTheBundle) {
    const struct {
        const char* server;
        std::optional<QUrl> url;
    } cases[] = {{"", std::nullopt},
                 {"support.invalid", std::nullopt},
                 {"a b", std::nullopt},
                 {"s.example:444", QUrl("https://s.example:444/resources/supportlogs/api.php")},
                 {"s.example", QUrl("https://s.example/resources/supportlogs/api.php")},
                 {"localhost:1", QUrl("http://localhost:1/resources/supportlogs/api.php")}};
    for (const auto& one : cases)
        EXPECT_EQ(QNSupportLog::serverURL(bundle(one.server)), one.url) << one.server;
    QNSupportLog report(plainSources(), bundle());
    unsigned last = 0;
    report.submitWithHandler([&](const QString&, unsigned stage) { last = stage; });
    EXPECT_TRUE(waitUntil([&] { return last == 4; }));
}

TEST_F(SupportLogTest, CancelledReportsCallNobody) {
    for (const bool whileSending : {false, true}) {
        HttpServer server(HttpServer::Behaviour::neverAnswer, {});
        QNSupportLog report(plainSources(),
                            bundle("127.0.0.1:" + std::to_string(server.serverPort())));
        unsigned last = 0;
        report.submitWithHandler([&](const QString&, unsigned stage) { last = stage; });
        if (whileSending) {
            ASSERT_TRUE(waitUntil([&] { return last == 2; }));
        }
        report.cancel();
        last = 0;
        ASSERT_TRUE(
            waitUntil([] { return QDir(QDir::tempPath()).entryList({"*.xar"}).isEmpty(); }));
        support::serveEvents();
        EXPECT_EQ(last, 0U);
    }
}
