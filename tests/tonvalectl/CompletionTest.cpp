#include "tonvalectl/CtlFixture.h"

// The shells themselves complete, as far as they are installed.
namespace {

class CompletionTest : public CtlFixture {
  protected:
    void SetUp() override {
        startTonvale();
        checkIn(4711, "Music Player");
        checkIn(4712, "Firefox");
        checkIn(4713, "*"); // no pattern
    }

    static bool isInstalled(const std::string& shell) {
        return support::runCommand({"sh", "-c", "command -v " + shell}).status == 0;
    }

    /// What bash offers for the last of `words`, which has that number.
    static std::string inBash(const std::string& words, const std::string& number) {
        return support::runCommand({"bash", "-c",
                                    ". \"$0\"/tonvalectl.bash; COMP_WORDS=(" + words +
                                        ") COMP_CWORD=" + number +
                                        "; _tonvalectl; printf '%s\\n' \"${COMPREPLY[@]}\"",
                                    TONVALE_COMPLETIONS})
            .output;
    }

    /// What becomes of a line at the prompt of zsh with the Tab key.
    std::string inZsh(const std::string& line) const {
        const std::filesystem::path result = folder_.path() / "line";
        std::ofstream(folder_.path() / ".zshrc")
            << "fpath=(" << TONVALE_COMPLETIONS << " $fpath)\n"
            << "autoload -Uz compinit && compinit -u -D\n"
            << "keep() { print -r -- \"$BUFFER\" >" << result.string()
            << "; BUFFER=exit; zle accept-line }\n"
            << "zle -N keep\nbindkey '^O' keep\n";
        std::filesystem::remove(result);
        support::runCommand({"sh", "-c",
                             "printf '%s\\t\\017' \"$0\" |"
                             "timeout 20 script -qec 'zsh -di' /dev/null",
                             line});
        return contentOf(result);
    }

    static std::string inFish(const std::string& line) {
        return support::runCommand({"fish", "--no-config", "-c",
                                    "source $argv[1]/tonvalectl.fish; complete -C $argv[2]", "--",
                                    TONVALE_COMPLETIONS, line})
            .output;
    }

    const support::ScopedVariable path_{"PATH",
                                        std::filesystem::path(TONVALECTL).parent_path().string() +
                                            ":" + std::string(qgetenv("PATH"))};
    const support::ScopedVariable zshFolder_{"ZDOTDIR", folder_.path()};
    const support::ScopedVariable terminal_{"TERM", "xterm"};
};

} // namespace

TEST_F(CompletionTest, OfBash) {
    EXPECT_EQ(inBash("tonvalectl un", "1"), "unmute\nunignore\n");
    EXPECT_EQ(inBash("tonvalectl set ''", "2"), "\\*\nFirefox\nMusic\\ Player\n");
    EXPECT_EQ(inBash("tonvalectl --json get mu", "3"), "Music\\ Player\n");
    EXPECT_EQ(inBash("tonvalectl set '\"mu'", "2"), "Music Player\n") << "within a quote";
    EXPECT_EQ(inBash("tonvalectl unignore xc", "2"), "Xcode\n");
    EXPECT_EQ(inBash("tonvalectl list --a", "2"), "--all\n");
}

TEST_F(CompletionTest, OfZsh) {
    if (!isInstalled("zsh") || !isInstalled("script"))
        GTEST_SKIP() << "without zsh, or script for its terminal";
    EXPECT_EQ(inZsh("tonvalectl unm"), "tonvalectl unmute \n");
    EXPECT_EQ(inZsh("tonvalectl set mu"), "tonvalectl set Music\\ Player \n");
    EXPECT_EQ(inZsh("tonvalectl set Firefox o"), "tonvalectl set Firefox o\n");
    EXPECT_EQ(inZsh("tonvalectl default o"), "tonvalectl default off \n");
    EXPECT_EQ(inZsh("tonvalectl unignore xc"), "tonvalectl unignore Xcode \n");
    EXPECT_EQ(inZsh("tonvalectl list --a"), "tonvalectl list --all \n");
}

TEST_F(CompletionTest, OfFish) {
    if (!isInstalled("fish"))
        GTEST_SKIP() << "without fish";
    EXPECT_EQ(inFish("tonvalectl unm"), "unmute\tUnmute a program\n");
    EXPECT_EQ(inFish("tonvalectl set "), "*\nFirefox\nMusic Player\n");
    EXPECT_EQ(inFish("tonvalectl get mu"), "Music Player\n");
    EXPECT_EQ(inFish("tonvalectl default o"), "off\n");
    EXPECT_EQ(inFish("tonvalectl unignore xc"), "Xcode\n");
    EXPECT_EQ(inFish("tonvalectl list --a"), "--all\tAlso those that are not running\n");
}
