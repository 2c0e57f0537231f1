#include "platform/defaults/UserDefaults.h"

#include "DefaultsFixture.h"
#include "platform/loop/MainQueue.h"
#include "support/SystemLogRecorder.h"

#include <QDateTime>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <optional>
#include <thread>

using platform::DefaultsObservation;
using platform::drainMainQueue;
using platform::UserDefaults;

namespace {

using UserDefaultsTest = DefaultsFixture;

} // namespace

TEST_F(UserDefaultsTest, ReadsAValueOfTheWrongTypeAsWhatItMeansOrAsRegistered) {
    const struct {
        const char* what;
        QVariant stored;
        bool boolean;
        qlonglong integer;
        double number;
        QString text;
    } cases[] = {
        {"nothing", {}, true, 7, 0.25, "registered"},
        {"false", false, false, 0, 0, "registered"},
        {"true", true, true, 1, 1, "registered"},
        {"integer", -2LL, true, -2, -2, "registered"},
        {"unsigned", std::numeric_limits<qulonglong>::max(), true, 7, 0x1p64, "registered"},
        {"number", 2.75, true, 2, 2.75, "registered"},
        {"large number", -1e300, true, 7, -1e300, "registered"},
        {"no number", std::nan(""), true, 7, 0.25, "registered"},
        {"YES", "YES", true, 7, 0.25, "YES"},
        {"no", " no ", false, 7, 0.25, " no "},
        {"0 in text", "0", false, 0, 0, "0"},
        {"number in text", "-12.5", true, -12, -12.5, "-12.5"},
        {"integer in text", "9007199254740993", true, 9007199254740993, 9007199254740992.0,
         "9007199254740993"},
        {"infinity in text", "inf", true, 7, 0.25, "inf"},
        {"other text", "12 apples", true, 7, 0.25, "12 apples"},
        {"empty text", "", true, 7, 0.25, ""},
        {"bytes", QByteArray("1"), true, 7, 0.25, "registered"},
        {"list", QVariantList{1LL}, true, 7, 0.25, "registered"},
        {"dictionary", QVariantMap{{"a", 1LL}}, true, 7, 0.25, "registered"},
    };
    const QVariantMap registeredMap{{"registered", true}};
    const QVariantList registeredList{"registered"};
    for (const auto& [what, stored, boolean, integer, number, text] : cases) {
        SCOPED_TRACE(what);
        QVariantMap values;
        for (const char* const key : {"boolean", "integer", "number", "text", "map", "list"})
            values.insert(key, stored);
        writeFile(values);
        UserDefaults defaults(path_);
        defaults.registerDefaults({{"boolean", true},
                                   {"integer", 7},
                                   {"number", 0.25},
                                   {"text", "registered"},
                                   {"map", registeredMap},
                                   {"list", registeredList}});
        EXPECT_EQ(defaults.boolean("boolean"), boolean);
        EXPECT_EQ(defaults.integer("integer"), integer);
        EXPECT_EQ(defaults.number("number"), number);
        EXPECT_EQ(defaults.text("text"), text);
        const bool isMap = stored.typeId() == QMetaType::QVariantMap;
        EXPECT_EQ(defaults.dictionary("map"), isMap ? stored.toMap() : registeredMap);
        const bool isList = stored.typeId() == QMetaType::QVariantList;
        EXPECT_EQ(defaults.list("list"), isList ? stored.toList() : registeredList);
    }
}

TEST_F(UserDefaultsTest, AnswersFalseZeroOrNothingWhereNothingFits) {
    writeFile({{"key", QByteArray("x")}});
    UserDefaults defaults(path_);
    defaults.registerDefaults({{"key", QDateTime::currentDateTimeUtc()}});
    EXPECT_FALSE(defaults.boolean("key"));
    EXPECT_EQ(defaults.integer("key"), 0);
    EXPECT_EQ(defaults.number("key"), 0);
    EXPECT_EQ(defaults.text("key"), "");
    EXPECT_TRUE(defaults.dictionary("key").isEmpty());
    EXPECT_TRUE(defaults.list("key").isEmpty());
    EXPECT_FALSE(defaults.value("unknown").isValid());
}

TEST_F(UserDefaultsTest, RegisteredValuesLieBelowThoseThatAreSetAndAreNotSaved) {
    UserDefaults defaults(path_);
    defaults.registerDefaults({{"step", 5}, {"name", "x"}});
    defaults.registerDefaults({{"step", 6}});
    EXPECT_EQ(defaults.integer("step"), 6);
    EXPECT_EQ(defaults.text("name"), "x");
    defaults.set("step", 6); // chosen, even if it is the same now
    defaults.set("name", "y");
    defaults.remove("name");
    EXPECT_EQ(defaults.text("name"), "x");
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_EQ(inFile(), (QVariantMap{{"step", 6LL}}));
    defaults.set("step", QVariant());
    ASSERT_TRUE(defaults.synchronize());
    EXPECT_TRUE(inFile().isEmpty());
}

TEST_F(UserDefaultsTest, TellsObserversWhenTheValueIsAnother) {
    UserDefaults defaults(path_);
    defaults.registerDefaults({{"step", 5}});
    std::vector<qlonglong> seen;
    std::thread::id thread;
    const DefaultsObservation token = defaults.observe("step", [&] {
        seen.push_back(defaults.integer("step"));
        thread = std::this_thread::get_id();
    });
    const auto expectSeen = [&](const std::vector<qlonglong>& expected, const char* after) {
        drainMainQueue();
        EXPECT_EQ(seen, expected) << after;
        seen.clear();
    };
    std::thread([&] { defaults.set("step", 10); }).join();
    EXPECT_TRUE(seen.empty()) << "told from within the change";
    expectSeen({10}, "a change on another thread");
    EXPECT_EQ(thread, std::this_thread::get_id());
    defaults.set("step", 10);
    defaults.set("other", 10);
    expectSeen({}, "changes of nothing");
    for (int i = 0; i < 100; ++i)
        defaults.set("step", i);
    expectSeen({99}, "many changes");
    defaults.set("step", 1);
    defaults.set("step", 99);
    expectSeen({}, "a change there and back");
    defaults.remove("step");
    expectSeen({5}, "removal");
    defaults.registerDefaults({{"step", 7}});
    expectSeen({7}, "registration");
    defaults.set("step", 7);
    expectSeen({}, "what was registered becomes set");
    ASSERT_TRUE(defaults.synchronize());
    expectSeen({}, "saving");
    writeFile({{"step", 20LL}});
    ASSERT_TRUE(defaults.synchronize());
    expectSeen({20}, "another program");
}

TEST_F(UserDefaultsTest, AnObservationEndsWithItsToken) {
    int calls = 0;
    std::optional<UserDefaults> defaults(path_);
    auto token = std::make_unique<DefaultsObservation>(defaults->observe("key", [&] { ++calls; }));
    DefaultsObservation moved(std::move(*token));
    token.reset();
    defaults->set("key", 1);
    drainMainQueue();
    EXPECT_EQ(calls, 1);
    defaults->set("key", 2);
    moved = DefaultsObservation(); // with a call under way
    drainMainQueue();
    EXPECT_EQ(calls, 1);

    std::unique_ptr<DefaultsObservation> own;
    own = std::make_unique<DefaultsObservation>(defaults->observe("key", [&] {
        ++calls;
        own.reset();
    }));
    const DefaultsObservation outliving = defaults->observe("key", [&] { ++calls; });
    defaults->set("key", 3);
    drainMainQueue();
    EXPECT_EQ(calls, 3);
    defaults->set("key", 4);
    defaults.reset(); // with calls under way
    drainMainQueue();
    EXPECT_EQ(calls, 3);
}

TEST_F(UserDefaultsTest, ManyThreadsSetReadAndSaveAtOnce) {
    constexpr int threads = 8;
    constexpr int rounds = 300;
    std::optional<UserDefaults> defaults(path_);
    std::atomic<int> told = 0;
    const DefaultsObservation token = defaults->observe("shared", [&] { ++told; });
    std::vector<std::thread> workers;
    workers.reserve(threads);
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&, t] {
            const QString own = QString::number(t);
            for (int i = 1; i <= rounds; ++i) {
                defaults->set(own, i);
                defaults->set("shared", QVariantMap{{own, i}});
                EXPECT_EQ(defaults->integer(own), i);
                EXPECT_EQ(defaults->dictionary("shared").size(), 1);
                EXPECT_TRUE(i % 100 != t || defaults->synchronize());
                defaults->registerDefaults({{"registered", i}});
            }
        });
    }
    for (std::thread& worker : workers)
        worker.join();
    drainMainQueue();
    EXPECT_GE(told, 1);
    defaults.reset();
    for (int t = 0; t < threads; ++t)
        EXPECT_EQ(inFile()[QString::number(t)], rounds);
}

TEST_F(UserDefaultsTest, WithoutAFolderValuesAreInMemoryAndThatIsToldOnce) {
    support::SystemLogRecorder systemLog;
    UserDefaults::setReporter(nullptr);
    UserDefaults defaults({});
    defaults.set("key", 1);
    EXPECT_EQ(defaults.integer("key"), 1);
    EXPECT_FALSE(defaults.synchronize());
    EXPECT_FALSE(defaults.synchronize());
    ASSERT_EQ(systemLog.lines().size(), 1U);
    EXPECT_EQ(systemLog.lines()[0].priority, platform::LogPriority::error);
}
