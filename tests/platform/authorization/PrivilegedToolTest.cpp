#include "platform/authorization/PrivilegedTool.h"
#include "platform/authorization/AuthorizationReason.h"

#include "support/Files.h"
#include "support/PrivateFolder.h"
#include "support/SystemLogRecorder.h"
#include "support/WaitUntil.h"
#include "support/WithoutCapabilities.h"

#include <gtest/gtest.h>

#include <csignal>
#include <future>
#include <thread>

namespace fs = std::filesystem;
using platform::PrivilegedTool;
using Answer = PrivilegedTool::Answer;
using Rights = PrivilegedTool::Rights;

namespace {

/// Says that it is authorised, and replies with its arguments when it may go on.
constexpr const char* goodTool = R"sh(printf '\006' >&2
[ "$(head -c 1 | od -An -tx1)" = " 06" ] || exec touch "$(dirname "$0")/left"
echo "noise" >&2
printf '%s|' "$@")sh";

class PrivilegedToolTest : public testing::Test {
    const support::PrivateFolder folder_;

  protected:
    PrivilegedToolTest() { write("tool", goodTool); }

    std::string write(const std::string& name, const std::string& script) const {
        const fs::path file = path(name);
        std::ofstream(file) << "#!/bin/sh\n" << script << "\n";
        fs::permissions(file, fs::perms::owner_all);
        return file;
    }

    PrivilegedTool tool(const std::string& pkexec, Rights rights = Rights::administrator) const {
        return {{path("tool"), "i", "a b", ""}, rights, write("pkexec", pkexec)};
    }

    std::string path(const std::string& name) const { return folder_.path() / name; }

    /// What pkexec does once the user has agreed.
    const std::string granting = "echo \"$1\" > " + path("option") + "; shift; exec \"$@\"";
    static constexpr const char* reply = "i|a b||";

  private:
    const support::SystemLogRecorder log_;
};

} // namespace

TEST_F(PrivilegedToolTest, RunsTheToolOnceItIsAuthorized) {
    PrivilegedTool asked = tool(granting);
    EXPECT_EQ(asked.authorize(), Answer::granted);
    EXPECT_EQ(asked.run(), reply);
    EXPECT_EQ(support::contentOf(path("option")), "--disable-internal-agent\n");
    EXPECT_EQ(asked.run(), "") << "only once";

    PrivilegedTool direct = tool("touch " + path("asked"), Rights::own);
    EXPECT_EQ(direct.authorize(), Answer::granted);
    EXPECT_EQ(direct.run(), reply);
    EXPECT_FALSE(fs::exists(path("asked")));
}

TEST_F(PrivilegedToolTest, TheQuestionCanBeTakenBack) {
    PrivilegedTool asked = tool("touch " + path("asked") + "; exec sleep 1000");
    std::thread another([&] {
        EXPECT_TRUE(support::waitUntil([&] { return fs::exists(path("asked")); }));
        asked.cancel();
    });
    EXPECT_EQ(asked.authorize(), Answer::cancelled);
    another.join();
    fs::remove(path("asked"));
    PrivilegedTool early = tool("touch " + path("asked"));
    early.cancel();
    EXPECT_EQ(early.authorize(), Answer::cancelled);
    EXPECT_FALSE(fs::exists(path("asked")));
}

TEST_F(PrivilegedToolTest, TellsWhyTheToolDoesNotRun) {
    const struct {
        const char* pkexec;
        Answer answer;
        int status;
        const char* reason; ///< a part of it
    } cases[] = {
        {"exit 126", Answer::cancelled, 126, ""},
        {"echo 'Error executing command as another user: No authentication agent found.' >&2; "
         "exit 127",
         Answer::noAgent, 127, "mate-polkit"},
        {"echo 'Error getting authority: Error initializing authority: no' >&2; exit 127",
         Answer::noPolkit, 127, "polkitd"},
        {"echo 'Error checking for authorization org.x: GDBus.Error: ServiceUnknown' >&2; exit 127",
         Answer::noPolkit, 127, "polkitd"},
        {"echo 'Error executing command as another user: Not authorized' >&2; exit 127",
         Answer::notAuthorized, 127, "not authorized"},
        {"exit 127", Answer::failed, 127, "cannot run"},
        {"exit 0", Answer::failed, 0, "cannot run"},
        {"echo reply; exit 3", Answer::failed, 3, "cannot run"},
        {"kill -9 $$", Answer::failed, 128 + SIGKILL, "cannot run"},
        {"yes garbage | head -c 3000000 | tee /dev/stderr; exit 0", Answer::failed, 0,
         "cannot run"},
    };
    for (const auto& [pkexec, answer, status, reason] : cases) {
        PrivilegedTool asked = tool(pkexec);
        EXPECT_EQ(asked.authorize(), answer) << pkexec;
        EXPECT_EQ(asked.status(), status) << pkexec;
        EXPECT_EQ(asked.run(), "") << pkexec;
        const QString text = platform::authorizationReason(answer);
        EXPECT_TRUE(text.contains(reason)) << text.toStdString();
        EXPECT_EQ(text.isEmpty(), answer == Answer::cancelled);
    }
    PrivilegedTool noPkexec({path("tool")}, Rights::administrator, path("none"));
    EXPECT_EQ(noPkexec.authorize(), Answer::noPkexec);
    EXPECT_TRUE(platform::authorizationReason(Answer::noPkexec).contains("\"pkexec\""));

    PrivilegedTool noTool({path("none")}, Rights::own);
    EXPECT_EQ(noTool.authorize(), Answer::failed);
    EXPECT_EQ(noTool.status(), ENOENT);
    PrivilegedTool endsWith126({write("126", "exit 126")}, Rights::own);
    EXPECT_EQ(endsWith126.authorize(), Answer::failed) << "nobody was asked";
}

TEST_F(PrivilegedToolTest, LeavesEverythingAsItIsWhenItIsDestroyedInBetween) {
    {
        PrivilegedTool asked = tool(granting);
        ASSERT_EQ(asked.authorize(), Answer::granted);
        EXPECT_FALSE(fs::exists(path("left")));
    }
    EXPECT_TRUE(support::waitUntil([&] { return fs::exists(path("left")); }));
}

TEST_F(PrivilegedToolTest, EndWithoutAReplyAndEndlessRepliesAreNone) {
    for (const char* end : {"kill -9 $$", "exit 0", "head -c 3000000 /dev/zero"}) {
        PrivilegedTool asked = tool(std::string("printf '\\006' >&2; ") + end);
        EXPECT_EQ(asked.authorize(), Answer::granted) << end;
        EXPECT_EQ(asked.run(), "") << end;
    }
}

TEST_F(PrivilegedToolTest, WaitsForAsLongAsTheUserThinks) {
    PrivilegedTool asked = tool("echo $$ > " + path("new") + "; mv " + path("new") + " " +
                                path("pid") + "; echo wait >&2; exec sleep 600");
    auto answer = std::async(std::launch::async, [&] { return asked.authorize(); });
    ASSERT_TRUE(support::waitUntil([&] { return fs::exists(path("pid")); }));
    EXPECT_EQ(answer.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    ::kill(std::stoi(support::contentOf(path("pid"))), SIGTERM);
    EXPECT_EQ(answer.get(), Answer::failed);
    EXPECT_EQ(asked.status(), 128 + SIGTERM);
}

TEST_F(PrivilegedToolTest, OutlivesTheThreadThatAuthorizes) {
    // As pkexec does, so that the kernel ends it with the thread that has started it.
    PrivilegedTool asked = tool("shift; exec setpriv --pdeathsig TERM \"$@\"");
    std::thread([&] { EXPECT_EQ(asked.authorize(), Answer::granted); }).join();
    EXPECT_EQ(asked.run(), reply);
}

TEST_F(PrivilegedToolTest, NeedsNoOtherRightsWhereItsUserMayWrite) {
    fs::create_directories(path("free/full"));
    fs::create_directories(path("locked/full"));
    fs::create_directories(path("free/locked"));
    std::ofstream(path("file")).flush();
    for (const char* locked : {"locked", "free/locked"})
        fs::permissions(path(locked), fs::perms(0555));
    const struct {
        const char* path;
        bool may;
    } cases[] = {
        {"free/new", true},        {"free/full", true},   {"free/a/b/c/new", true},
        {"free/locked", false},    {"locked/new", false}, {"locked/full", false},
        {"locked/a/b/new", false}, {"file/new", false},   {"free/locked/a/new", false},
    };
    support::withoutCapabilities([&] {
        for (const auto& [name, may] : cases)
            EXPECT_EQ(platform::mayReplace(path(name)), may) << name;
    });
    for (const char* locked : {"locked", "free/locked"})
        fs::permissions(path(locked), fs::perms(0755));
}
