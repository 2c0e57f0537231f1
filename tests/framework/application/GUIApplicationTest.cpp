#include "ApplicationFixture.h"

#include "platform/window/Alert.h"

#include <QApplication>
#include <QPushButton>
#include <QWidget>

#include <vector>

using platform::Alert;

namespace {

/// Answers alerts instead of the user.
class Answers : public platform::AlertPresenter {
  public:
    Answers() { platform::replaceAlertPresenter(this); }
    ~Answers() override { platform::replaceAlertPresenter(nullptr); }

    Alert::Button run(const Alert& alert) override {
        run_.push_back(alert);
        return Alert::other;
    }
    void showOn(const Alert& alert, QWidget&) override { sheets_.push_back(alert); }

    std::vector<Alert> run_;
    std::vector<Alert> sheets_;
};

} // namespace

TEST_F(ApplicationTest, AlertsAreSheetsWhereAWindowCanTakeOne) {
    Answers answers;
    const QString text = "100 %@";
    application.alertWithTitle("no window", text, "OK");
    QWidget window;
    window.show();
    application.criticalAlertWithTitle("sheet", text, "OK");
    QWidget above(&window, Qt::Dialog);
    above.show();
    application.warningAlertWithTitle("covered", text, "OK");
    EXPECT_EQ(application.criticalAlertWithTitle("asks", text, "A", "B", "C"), Alert::other);

    ASSERT_EQ(answers.run_.size(), 3U);
    EXPECT_EQ(answers.run_[0].title, "no window");
    EXPECT_EQ(answers.run_[0].message, text);
    EXPECT_EQ(answers.run_[0].kind, Alert::Kind::plain);
    EXPECT_EQ(answers.run_[1].title, "covered");
    EXPECT_EQ(answers.run_[1].kind, Alert::Kind::warning);
    EXPECT_EQ(answers.run_[2].kind, Alert::Kind::critical);
    EXPECT_EQ(answers.run_[2].otherButton, "C");
    ASSERT_EQ(answers.sheets_.size(), 1U);
    EXPECT_EQ(answers.sheets_[0].kind, Alert::Kind::critical);
}

TEST_F(ApplicationTest, WaitingServesEventsAndEndsAtItsTime) {
    bool served = false;
    QMetaObject::invokeMethod(
        qApp, [&] { served = true; }, Qt::QueuedConnection);
    application.waitInEventLoopFor(0.01);
    EXPECT_TRUE(served);
    application.waitInEventLoopFor(-1);
}
