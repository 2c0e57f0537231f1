#include "helper/DBusMenu.h"

#include "platform/language/MessageLanguages.h"

#include <QLocale>

#include <algorithm>
#include <utility>

namespace {

constexpr int rootId = 0;

QVariantMap chosenOf(const QVariantMap& properties, const QStringList& keys) {
    if (keys.isEmpty())
        return properties;
    QVariantMap chosen;
    for (const QString& key : keys) {
        if (properties.contains(key))
            chosen.insert(key, properties.value(key));
    }
    return chosen;
}

MenuLayoutItem layoutOf(const MenuEntry& entry, int depth, const QStringList& keys) {
    MenuLayoutItem item{entry.id, chosenOf(entry.properties, keys), {}};
    if (depth == 0)
        return item;
    for (const MenuEntry& child : entry.children)
        item.children.append(QDBusVariant(QVariant::fromValue(layoutOf(child, depth - 1, keys))));
    return item;
}

struct Differences {
    QList<MenuItemProperties> updated;
    QList<MenuItemKeys> removed;
};

void compare(const MenuEntry& before, const MenuEntry& now, Differences& differences) {
    MenuItemProperties updated{now.id, {}};
    for (auto [key, value] : now.properties.asKeyValueRange()) {
        if (before.properties.value(key) != value)
            updated.properties.insert(key, value);
    }
    if (!updated.properties.isEmpty())
        differences.updated.append(updated);
    MenuItemKeys removed{now.id, {}};
    for (auto [key, value] : before.properties.asKeyValueRange()) {
        if (!now.properties.contains(key))
            removed.keys.append(key);
    }
    if (!removed.keys.isEmpty())
        differences.removed.append(removed);
    for (std::size_t i = 0; i < now.children.size(); ++i)
        compare(before.children[i], now.children[i], differences);
}

/// `entry` as it looks in `newest`; one that is not there any more cannot be chosen.
void refresh(MenuEntry& entry, const MenuEntry& newest) {
    if (const MenuEntry* const same = findEntry(newest, entry.id)) {
        entry.properties = same->properties;
        entry.command = same->command;
    } else if (entry.properties.contains(QStringLiteral("label"))) {
        entry.properties.insert(QStringLiteral("enabled"), false);
        entry.command = {};
    }
    for (MenuEntry& child : entry.children)
        refresh(child, newest);
}

} // namespace

DBusMenu::DBusMenu(Actions actions) : actions_(std::move(actions)) {}

QString DBusMenu::textDirection() {
    const QLocale locale(QString::fromStdString(platform::messageLanguage()));
    return locale.textDirection() == Qt::RightToLeft ? QStringLiteral("rtl")
                                                     : QStringLiteral("ltr");
}

void DBusMenu::setTree(MenuEntry tree) {
    if (hasSameEntries(tree_, tree)) {
        pending_.reset();
        updateLooks(tree);
    } else if (isOpen_) {
        updateLooks(tree);
        pending_ = std::move(tree);
    } else {
        adopt(std::move(tree));
    }
}

void DBusMenu::adopt(MenuEntry tree) {
    pending_.reset();
    tree_ = std::move(tree);
    Q_EMIT LayoutUpdated(++revision_, rootId);
}

void DBusMenu::updateLooks(const MenuEntry& newest) {
    MenuEntry now = tree_;
    refresh(now, newest);
    Differences differences;
    compare(tree_, now, differences);
    tree_ = std::move(now);
    if (!differences.updated.isEmpty() || !differences.removed.isEmpty())
        Q_EMIT ItemsPropertiesUpdated(differences.updated, differences.removed);
}

uint DBusMenu::GetLayout(int parent, int depth, const QStringList& keys, MenuLayoutItem& layout) {
    if (const MenuEntry* const entry = findEntry(tree_, parent))
        layout = layoutOf(*entry, depth, keys);
    else
        layout.id = parent;
    return revision_;
}

QList<MenuItemProperties> DBusMenu::GetGroupProperties(const QList<int>& ids,
                                                       const QStringList& keys) {
    QList<MenuItemProperties> all;
    for (const int id : ids) {
        if (const MenuEntry* const entry = findEntry(tree_, id))
            all.append({id, chosenOf(entry->properties, keys)});
    }
    return all;
}

QDBusVariant DBusMenu::GetProperty(int id, const QString& key) {
    const MenuEntry* const entry = findEntry(tree_, id);
    const QVariant value = entry != nullptr ? entry->properties.value(key) : QVariant();
    return QDBusVariant(value.isValid() ? value : QVariant(QString()));
}

void DBusMenu::Event(int id, const QString& name, const QDBusVariant& /*data*/, uint /*time*/) {
    handle(id, name);
}

QList<int> DBusMenu::EventGroup(const QList<MenuEvent>& events) {
    QList<int> unknown;
    for (const MenuEvent& event : events) {
        if (!handle(event.id, event.name))
            unknown.append(event.id);
    }
    return unknown;
}

bool DBusMenu::handle(int id, const QString& event) {
    const MenuEntry* const entry = findEntry(tree_, id);
    if (entry == nullptr)
        return false;
    if (event == QLatin1String("clicked")) {
        if (entry->properties.value(QStringLiteral("enabled"), true).toBool())
            actions_.chosen(MenuCommand(entry->command));
    } else if (id == rootId && event == QLatin1String("opened")) {
        prepare();
        isOpen_ = true;
    } else if (id == rootId && event == QLatin1String("closed")) {
        isOpen_ = false;
        prepare();
    }
    return true;
}

/// True if the entries are others now.
bool DBusMenu::prepare() {
    if (!pending_)
        return false;
    adopt(std::move(*pending_));
    return true;
}

bool DBusMenu::AboutToShow(int id) {
    if (id != rootId)
        return false;
    isOpen_ = false; // not all hosts tell that it was closed
    const bool isChanged = prepare();
    actions_.opening();
    return isChanged;
}

QList<int> DBusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& unknown) {
    QList<int> changed;
    for (const int id : ids) {
        if (findEntry(tree_, id) == nullptr)
            unknown.append(id);
        else if (AboutToShow(id))
            changed.append(id);
    }
    return changed;
}
