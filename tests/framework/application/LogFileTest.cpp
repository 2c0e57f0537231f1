#include "ApplicationFixture.h"

#include "framework/application/SupportPath.h"
#include "framework/log/qnlog.h"
#include "platform/files/BackupExclusion.h"
#include "platform/window/ModifierKeys.h"
#include "support/ScopedVariable.h"

#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;
using support::ScopedVariable;

TEST_F(ApplicationTest, TheLogFileBeginsWithTheMachineAndTakesWhatIsLogged) {
    application.createLogFile("test.log", QString::fromStdString(path("a/b")));
    ASSERT_NE(application.logHandle(), nullptr);
    application.log("%@ has %u %% of %@", "one", 50U, "ten");
    application.logWithLevel(qnlog_warning, "literal %s", "percent %d");
    QNLog(qnlog_verbose, "not written");
    application.setLogHandle(application.logHandle()); // does nothing
    application.setLogHandle(nullptr);
    application.log("to the system log");
    EXPECT_TRUE(systemLog.contains("to the system log"));

    const std::string content = contentOf(path("a/b/test.log"));
    EXPECT_TRUE(content.starts_with("\xEF\xBB\xBF")) << content;
    EXPECT_NE(content.find(": [I] **** "), std::string::npos) << content;
    EXPECT_NE(content.find(" RAM ****\n"), std::string::npos) << content;
    EXPECT_NE(content.find(": [I] one has 50 % of ten\n"), std::string::npos) << content;
    EXPECT_NE(content.find(": [W] literal percent %d\n"), std::string::npos) << content;
    EXPECT_EQ(content.find("not written"), std::string::npos) << content;
    EXPECT_EQ(fs::status(path("a/b")).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(platform::isExcludedFromBackups(path("a/b")));
}

TEST_F(ApplicationTest, BothModifiersAtTheStartRaiseTheLevel) {
    struct Case {
        Qt::KeyboardModifiers (*keys)();
        std::uint32_t level;
    };
    const Case cases[] = {
        {[] { return Qt::KeyboardModifiers(Qt::ControlModifier); }, qnlog_user},
        {[] { return Qt::KeyboardModifiers(Qt::MetaModifier | Qt::ShiftModifier); }, qnlog_user},
        {[] { return Qt::ControlModifier | Qt::MetaModifier; }, qnlog_debug}};
    for (const Case& each : cases) {
        platform::replaceModifierKeys(each.keys);
        application.createLogFile("keys.log", QString::fromStdString(path("keys")));
        platform::replaceModifierKeys(nullptr);
        EXPECT_TRUE(support::waitUntil(
            [&] { return qnlog_getlevel(application.logHandle()) == each.level; }));
    }
}

// A FIFO that nobody reads is a disk that hangs.
TEST_F(ApplicationTest, NoThreadWaitsForALogThatAnotherOneCloses) {
    ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
    const platform::FileDescriptor reader(
        ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    application.setLogHandle(qnlog_open(path("fifo").c_str(), 0));
    for (int i = 0; i < 10'000; ++i)
        application.log("more than the FIFO has room for");
    std::thread closing([&] { application.setLogHandle(nullptr); });
    std::thread logging([&] {
        while (!systemLog.contains("from another thread"))
            application.log("from another thread"); // to the system log as soon as there is no file
    });
    EXPECT_TRUE(support::waitUntil([&] { return systemLog.contains("from another thread"); }));
    char buffer[4096];
    ::fcntl(reader.get(), F_SETFL, 0);
    while (::read(reader.get(), buffer, sizeof buffer) > 0) {
    }
    closing.join();
    logging.join();
}

TEST_F(ApplicationTest, ALogFileThatCannotBeOpenedLeavesTheOldOne) {
    application.createLogFile("first.log", QString::fromStdString(path("logs")));
    qnlog_handle* const first = application.logHandle();
    std::ofstream(path("file")) << "no folder";
    application.createLogFile("x.log", QString::fromStdString(path("file/logs")));
    EXPECT_EQ(application.logHandle(), first);
}

TEST_F(ApplicationTest, SupportFoldersAreMadeAndWhatIsWrongWithThemIsLogged) {
    const ScopedVariable data("XDG_DATA_HOME", path("data"));
    const ScopedVariable library("TONVALE_LOCAL_LIBRARY", path("library"));
    EXPECT_EQ(makeSupportPath("Leaf", false).toStdString(), path("data/Leaf"));
    EXPECT_EQ(makeSupportPath("Leaf", true).toStdString(),
              path("library/Application Support/Leaf"));
    EXPECT_EQ(fs::status(path("data/Leaf")).permissions(), fs::perms::owner_all);
    EXPECT_TRUE(fs::is_directory(path("library/Application Support/Leaf")));
    EXPECT_TRUE(systemLog.lines().empty());

    fs::permissions(path("data/Leaf"), fs::perms::owner_read);
    makeSupportPath("Leaf", false);
    EXPECT_TRUE(systemLog.contains("Support path has unexpected permissions! 256 (" +
                                   path("data/Leaf") + ")"));
    const ScopedVariable nowhere("XDG_DATA_HOME", path("none/such"));
    std::ofstream(path("none")) << "a file";
    makeSupportPath("Leaf", false);
    EXPECT_TRUE(
        systemLog.contains("Support path is not accessible! (" + path("none/such/Leaf") + ")"));
}
