#include "AppVolumeFixture.h"

#include "model/MVCommAppValue.h"
#include "platform/defaults/PropertyList.h"
#include "support/ManualClock.h"

using namespace std::chrono_literals;

namespace {

/// The plug-in's side of the bus: answers when the test says so.
class PreferencePublisherTest : public AppVolumeFixture {
  protected:
    using Answered = PluginBusClient::Answered;

    std::optional<support::ManualClock> clock_; // from when the programs are connected
    bool isThere_ = false;
    std::vector<PreferencesMessage> words_;
    std::vector<Answered> waiting_;

    void SetUp() override {
        controller_.publisher().setSender(
            [this](const PreferencesMessage& word, Answered answered) {
                if (!isThere_)
                    return false;
                words_.push_back(word);
                waiting_.push_back(std::move(answered));
                return true;
            });
    }

    void answer(const std::optional<QList<NamedSetting>>& newer) {
        const Answered next = waiting_.front();
        waiting_.erase(waiting_.begin());
        next(newer);
    }

    /// Lets the time pass after which a word may follow another.
    std::size_t wordsLater() {
        clock_->advance(100ms);
        support::serveEvents();
        return words_.size();
    }

    QStringList newsOf(std::size_t index) {
        QStringList news = words_.at(index).news;
        news.sort();
        return news;
    }

    int toldPercent(std::size_t index, const QString& name) {
        const auto word = platform::parsePropertyList(words_.at(index).preferences);
        return AppPreferences(word.value_or(QVariant()).toMap()["Apps"]).setting(name).percent;
    }
};

} // namespace

TEST_F(PreferencePublisherTest, TellsAllAndWhatIsNewUntilItIsTaken) {
    MVCommAppValue& app = connected(1, "player");
    clock_.emplace();
    controller_.setPercent(app, 40);
    EXPECT_EQ(wordsLater(), 0U) << "nobody is there";
    isThere_ = true;
    controller_.publisher().begin();
    ASSERT_EQ(words_.size(), 1U);
    EXPECT_EQ(toldPercent(0, "player"), 40);
    EXPECT_EQ(newsOf(0), QStringList("player")) << "set while nobody was there";
    controller_.setMuted(app, true);
    controller_.rememberedApps().set("other", {20, false});
    EXPECT_EQ(wordsLater(), 1U) << "the next one waits for the answer";
    answer(std::nullopt);
    ASSERT_EQ(words_.size(), 2U) << "at once, since it is late";
    EXPECT_EQ(newsOf(1), QStringList({"other", "player"})) << "the first one was not taken";
    answer(QList<NamedSetting>());
    controller_.changedElsewhere(1, {70, false});
    controller_.rememberedApps().forget("other");
    ASSERT_EQ(wordsLater(), 3U);
    EXPECT_EQ(newsOf(2), QStringList("other")) << "the plug-in knows the other";
    EXPECT_EQ(toldPercent(2, "player"), 70);
    answer(QList<NamedSetting>());
    EXPECT_EQ(wordsLater(), 3U) << "nothing has changed";
}

TEST_F(PreferencePublisherTest, LearnsWhatThePluginHasButForWhatWasSetMeanwhile) {
    MVCommAppValue& app = connected(1, "player");
    support::ScriptedPlugin second(MVCommMainSocketPath());
    MVCommAppValue& other = connected(second, 2, "other");
    isThere_ = true;
    controller_.publisher().begin();
    controller_.setPercent(other, 20);
    sent();
    view_.told.clear();
    answer(
        QList<NamedSetting>{{"player", {30, true}}, {"other", {50, true}}, {"gone", {60, false}}});
    EXPECT_EQ(controller_.percentOf(app), 30);
    EXPECT_TRUE(app.muted());
    EXPECT_FALSE(view_.told.isEmpty());
    EXPECT_EQ(controller_.percentOf(other), 20);
    EXPECT_FALSE(other.muted());
    EXPECT_EQ(controller_.rememberedApps().of("gone").percent, 60);
    EXPECT_EQ(stored()["player"].toMap()["Volume"], 30);
    EXPECT_EQ(sent(), "") << "the plug-in has it already";
}
