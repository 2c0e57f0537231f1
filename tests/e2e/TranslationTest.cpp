#include "e2e/DesktopFixture.h"

#include "look/window/QNAboutBox.h"
#include "platform/bundle/Bundle.h"
#include "platform/text/Texts.h"
#include "support/AccessibleObject.h"
#include "support/ScopedVariable.h"
#include "ui/VolumeMenu.h"

#include <QAction>
#include <QLabel>
#include <QRegularExpression>

using support::AccessibleObject;
using support::waitUntil;

// The programs in a language whose every text is that of the sources in brackets and with accents.
namespace {

/// Whether nothing is left to read without the texts in brackets but names, paths and what is
/// quoted from the log.
bool isTranslated(QString text) {
    static const QRegularExpression translated("\\[[^\\]]*\\]");
    static const QRegularExpression letters("[A-Za-z]");
    static const QRegularExpression foreign("^(Tonvale|player|/.*|Couldn't bind.*)$",
                                            QRegularExpression::MultilineOption);
    return !text.remove(translated).remove(foreign).contains(letters);
}

void collect(const AccessibleObject& object, QStringList& untranslated, int& count) {
    const bool isOurs = object.role() != "desktop frame" && object.role() != "application";
    for (const QString& text : {object.name(), object.description(), object.text()}) {
        if (isOurs && !isTranslated(text))
            untranslated += object.role() + ": " + text;
        count += text.startsWith('[') ? 1 : 0;
    }
    for (const AccessibleObject& child : object.children())
        collect(child, untranslated, count);
}

class TranslationTest : public DesktopFixture {
  protected:
    void press(const QString& button) {
        std::optional<AccessibleObject> found;
        ASSERT_TRUE(waitUntil([&] {
            for (const char* const role : {"button", "push button"})
                found = found ? found : tool_.desktop().find(role, button);
            return found.has_value();
        })) << tool_.outline().toStdString();
        found->act("Press");
    }

    /// Waits until everything can be seen that `expected` is a part of.
    void expectTranslated(const AccessibleObject& object, const QStringList& expected) {
        ASSERT_TRUE(waitUntil([&] {
            const QString all = tool_.outline();
            return std::ranges::all_of(expected,
                                       [&](const QString& each) { return all.contains(each); });
        })) << tool_.outline().toStdString();
        QStringList untranslated;
        int count = 0;
        collect(object, untranslated, count);
        EXPECT_TRUE(untranslated.isEmpty()) << untranslated.join('\n').toStdString();
        EXPECT_GE(count, expected.size());
    }

    const support::ScopedVariable locale_{"LC_ALL", "en_US.UTF-8"};
    const support::ScopedVariable language_{"LANGUAGE", "en_XA"};
    support::AssistiveTool tool_{session_};
};

} // namespace

TEST_F(TranslationTest, EveryTextOfTheWindowIsTranslated) {
    startTonvale();
    connectPlayer();
    support::ScriptedPlugin effects(MVCommMainSocketPath());
    effects.checkIn(1, "coreaudiod");
    ASSERT_TRUE(waitUntil([&] { return tool_.outline().contains("player"); }));
    expectTranslated(tool_.desktop(), {"player", "[Šöüñd Ëffëçtš]", "[Prögråmš]", "[Völümë]",
                                       "[Mütë]", "[Mëñü]", "[Çlöšë"});
}

TEST_F(TranslationTest, SoAreWhatIsWrongAndTheDetails) {
    const std::filesystem::path folder =
        std::filesystem::path(std::getenv("TMPDIR")) / "not yet there";
    const support::ScopedVariable place("TONVALE_SOCKET_DIR", folder);
    tonvale_.emplace(std::vector<std::string>{TONVALE_PROGRAM});
    press("[Dëtåïlš…]");
    expectTranslated(tool_.desktop(),
                     {"[Völümëš çåñ't bë šët", "[Trý Ågåïñ]", "[Šöçkët: ", "[ÖK]"});
}

TEST_F(TranslationTest, SoAreThePreferences) {
    startTonvale();
    activateAction("preferences");
    ASSERT_TRUE(waitUntil([&] { return tool_.window("[Prëfërëñçëš]").has_value(); }))
        << tool_.outline().toStdString();
    expectTranslated(*tool_.window("[Prëfërëñçëš]"),
                     {"[Gëñërål]", "[Ïgñörë Lïšt]", "[Štårt nëw prögråmš åt]"});
}

// A pop-up menu is no window to assistive tools.
TEST(Translation, IncludesTheMenuAndTheAboutBox) {
    const support::ScopedVariable locale("LC_ALL", "en_US.UTF-8");
    const support::ScopedVariable language("LANGUAGE", "en_XA");
    Texts::load(platform::Bundle::main().resources() / "translations");
    QWidget window;
    const VolumeMenu menu(window);
    const auto entries = menu.findChildren<QAction*>();
    EXPECT_GE(entries.size(), 12);
    for (const QAction* const entry : entries)
        EXPECT_TRUE(isTranslated(entry->text())) << entry->text().toStdString();
    for (const QLabel* const label : QNAboutBox(&window, true).findChildren<QLabel*>())
        EXPECT_TRUE(isTranslated(label->text())) << label->text().toStdString();
}

TEST_F(TranslationTest, WhatIsPrintedIsTranslatedWithoutQt) {
    const QStringList withoutWords{"", "  unmute NAME", "  toggle NAME"};
    for (const std::string& program :
         {std::string(TONVALE_PROGRAM), std::string(TONVALECTL), std::string(TONVALE_PLUGIN)}) {
        const auto [status, help] = support::runCommand({program, "--help"});
        EXPECT_EQ(status, 0);
        const auto english = support::runCommand({"env", "LANGUAGE=en", program, "--help"});
        const QStringList lines = QString::fromStdString(english.output).split('\n');
        for (const QString& line : QString::fromStdString(help).split('\n'))
            EXPECT_TRUE(withoutWords.contains(line) || !lines.contains(line)) << line.toStdString();

        const auto [refused, error] =
            support::runCommand({"sh", "-c", "\"$0\" --no-such-option 2>&1", program});
        EXPECT_EQ(refused, 2);
        EXPECT_NE(error.find(": ["), std::string::npos) << error;
    }
}
