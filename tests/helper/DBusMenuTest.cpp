#include "helper/DBusMenu.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

MenuEntry entry(int id, const QString& label, std::vector<MenuEntry> children = {}) {
    return {.id = id,
            .properties = {{"label", label}},
            .command = {MenuCommand::Kind::setProgramVolume, {}, id},
            .children = std::move(children)};
}

MenuEntry menuOf(std::vector<MenuEntry> children) {
    return {.properties = {{"children-display", "submenu"}}, .children = std::move(children)};
}

QString labelsOf(const MenuLayoutItem& item) {
    QString text = QString::number(item.id) + item.properties["label"].toString();
    for (const QDBusVariant& child : item.children)
        text += "(" + labelsOf(qvariant_cast<MenuLayoutItem>(child.variant())) + ")";
    return text;
}

/// The menu, and what it tells its hosts.
class DBusMenuTest : public testing::Test {
  protected:
    DBusMenuTest() {
        menu_.setTree(menuOf({entry(1, "a"), entry(2, "b", {entry(3, "c")})}));
        QObject::connect(&menu_, &DBusMenu::LayoutUpdated, [this](uint, int) { ++layouts_; });
        QObject::connect(&menu_, &DBusMenu::ItemsPropertiesUpdated,
                         [this](const auto& updated, const auto& removed) {
                             for (const auto& each : updated)
                                 updates_ += QString::number(each.id) +
                                             QStringList(each.properties.keys()).join("+") + " ";
                             for (const auto& each : removed)
                                 updates_ += "-" + QString::number(each.id) + each.keys.join("+");
                         });
    }

    QString layout(int parent = 0, int depth = -1, const QStringList& keys = {}) {
        MenuLayoutItem item;
        menu_.GetLayout(parent, depth, keys, item);
        return labelsOf(item);
    }

    void send(int id, const QString& event) { menu_.Event(id, event, {}, 0); }

    std::vector<int> chosen_;
    int openings_ = 0;
    int layouts_ = 0;
    QString updates_;
    DBusMenu menu_{{.chosen = [this](const MenuCommand& each) { chosen_.push_back(each.percent); },
                    .opening = [this] { ++openings_; }}};
};

} // namespace

TEST_F(DBusMenuTest, AnswersWhatHostsAskFor) {
    EXPECT_EQ(layout(), "0(1a)(2b(3c))");
    EXPECT_EQ(layout(0, 1), "0(1a)(2b)");
    EXPECT_EQ(layout(0, 0), "0");
    EXPECT_EQ(layout(2), "2b(3c)");
    EXPECT_EQ(layout(2, -1, {"enabled"}), "2(3)");
    EXPECT_EQ(layout(9), "9") << "there is none";
    const auto properties = menu_.GetGroupProperties({3, 9, 1}, {"label"});
    ASSERT_EQ(properties.size(), 2);
    EXPECT_EQ(properties[0].properties["label"], "c");
    EXPECT_EQ(menu_.GetProperty(1, "label").variant(), "a");
    EXPECT_TRUE(menu_.GetProperty(9, "label").variant().isValid()) << "or nothing could be sent";

    send(3, "clicked");
    send(1, "hovered");
    send(9, "clicked");
    EXPECT_EQ(menu_.EventGroup({{1, "clicked", {}, 0}, {9, "clicked", {}, 0}}), QList<int>{9});
    EXPECT_EQ(chosen_, (std::vector{3, 1}));
    EXPECT_FALSE(menu_.AboutToShow(0));
    EXPECT_FALSE(menu_.AboutToShow(2));
    QList<int> unknown;
    EXPECT_EQ(menu_.AboutToShowGroup({0, 2, 9}, unknown), QList<int>());
    EXPECT_EQ(unknown, QList<int>{9});
    EXPECT_EQ(openings_, 2);
}

TEST_F(DBusMenuTest, TellsOfLooksAndEntriesThatChange) {
    menu_.setTree(menuOf({entry(1, "a"), entry(2, "x", {entry(3, "y")})}));
    EXPECT_EQ(updates_, "2label 3label ");
    EXPECT_EQ(layouts_, 0);
    MenuEntry bare = entry(1, "a");
    bare.properties = {{"enabled", true}};
    menu_.setTree(menuOf({bare, entry(2, "x", {entry(3, "y")})}));
    EXPECT_EQ(updates_, "2label 3label 1enabled -1label");
    menu_.setTree(menuOf({entry(4, "d"), entry(1, "a")}));
    EXPECT_EQ(layouts_, 1);
    EXPECT_EQ(layout(), "0(4d)(1a)");
}

TEST_F(DBusMenuTest, KeepsItsEntriesWhileItIsOpen) {
    for (const bool tellsClosing : {true, false}) {
        menu_.setTree(menuOf({entry(1, "a"), entry(2, "b", {entry(3, "c")})}));
        layouts_ = 0;
        chosen_.clear();
        EXPECT_FALSE(menu_.AboutToShow(0));
        send(0, "opened");
        menu_.setTree(menuOf({entry(4, "d"), entry(1, "e")}));
        EXPECT_EQ(layouts_, 0);
        EXPECT_EQ(layout(), "0(1e)(2b(3c))") << "looks change";
        send(3, "clicked");
        EXPECT_TRUE(chosen_.empty()) << "it has gone";
        if (tellsClosing)
            send(0, "closed");
        else
            EXPECT_TRUE(menu_.AboutToShow(0)) << "it must have been closed";
        EXPECT_EQ(layouts_, 1);
        EXPECT_EQ(layout(), "0(4d)(1e)");
    }
}
