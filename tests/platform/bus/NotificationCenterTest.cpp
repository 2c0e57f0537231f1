#include "platform/bus/NotificationCenter.h"

#include "support/SystemLogRecorder.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

using platform::NotificationCenter;
using platform::NotificationObserver;

namespace {

const QString name = "ListDidChange";

void post(const QVariant& object = {}) {
    NotificationCenter::standard().post(name, object);
}

} // namespace

TEST(NotificationCenter, CallsTheObserversOfTheNameInOrderThoughOneThrows) {
    const support::SystemLogRecorder log;
    std::string calls;
    const NotificationObserver first(name, [&](const QVariant& object) {
        calls += "1" + object.toString().toStdString();
        throw std::runtime_error("from an observer");
    });
    const NotificationObserver other("Other", [&](auto&) { calls += "other"; });
    {
        const NotificationObserver second(name, [&](auto&) { calls += "2"; });
        const NotificationObserver third(name, [&](auto&) { calls += "3"; });
        post("x");
    }
    EXPECT_EQ(calls, "1x23");
    EXPECT_EQ(log.count("from an observer"), 1U);
    post();
    EXPECT_EQ(calls, "1x231");
}

TEST(NotificationCenter, LetsObserversComeAndGoDuringAPost) {
    std::string calls;
    std::optional<NotificationObserver> last;
    std::unique_ptr<NotificationObserver> late;
    std::unique_ptr<NotificationObserver> itself;
    itself = std::make_unique<NotificationObserver>(name, [&, mark = std::string("self")](auto&) {
        itself.reset();
        last.reset();
        late = std::make_unique<NotificationObserver>(name, [&](auto&) { calls += " late"; });
        calls += mark; // what the handler holds is still there
    });
    last.emplace(name, [&](auto&) { calls += " last"; });
    post();
    EXPECT_EQ(calls, "self");
    post();
    EXPECT_EQ(calls, "self late");
}

TEST(NotificationCenter, PostsFromWithinAPost) {
    std::string calls;
    std::unique_ptr<NotificationObserver> second;
    const NotificationObserver first(name, [&](const QVariant& object) {
        calls += "a";
        if (!object.isValid())
            post(1);
        second.reset();
    });
    second = std::make_unique<NotificationObserver>(name, [&](auto&) { calls += "b"; });
    post();
    EXPECT_EQ(calls, "aa") << "the inner post has removed it from the outer one too";
}
