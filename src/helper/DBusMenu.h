#pragma once

#include "helper/MenuEntry.h"
#include "helper/TrayTypes.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

/// A menu that hosts of tray icons draw: the object com.canonical.dbusmenu. While a host shows it,
/// its entries only change their looks, and those that have gone cannot be chosen; entries come and
/// go when it is closed, since hosts close or rebuild a menu for that. Main thread only.
class DBusMenu final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
    Q_PROPERTY(uint Version READ version CONSTANT)
    Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

  public:
    struct Actions {
        std::function<void(const MenuCommand&)> chosen;
        std::function<void()> opening; ///< a host is about to show the menu
    };

    static QString path() { return QStringLiteral("/MenuBar"); }

    explicit DBusMenu(Actions actions);

    /// Shows `tree`, at once or when the menu is closed.
    void setTree(MenuEntry tree);

    static uint version() { return 3; }
    static QString textDirection();
    static QString status() { return QStringLiteral("normal"); }
    static QStringList iconThemePath() { return {}; }

  public Q_SLOTS:
    /// `depth` levels below the entry, all if it is negative; all properties if no key is given.
    uint GetLayout(int parent, int depth, const QStringList& keys, MenuLayoutItem& layout);
    QList<MenuItemProperties> GetGroupProperties(const QList<int>& ids, const QStringList& keys);
    QDBusVariant GetProperty(int id, const QString& key);
    void Event(int id, const QString& name, const QDBusVariant& data, uint time);
    /// Returns the ids that no entry has.
    QList<int> EventGroup(const QList<MenuEvent>& events);
    /// Whether the host must read the entry again.
    bool AboutToShow(int id);
    QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& unknown);

  Q_SIGNALS:
    void ItemsPropertiesUpdated(const QList<MenuItemProperties>& updated,
                                const QList<MenuItemKeys>& removed);
    void LayoutUpdated(uint revision, int parent);

  private:
    bool handle(int id, const QString& event);
    bool prepare();
    void adopt(MenuEntry tree);
    void updateLooks(const MenuEntry& newest);

    const Actions actions_;
    MenuEntry tree_;
    std::optional<MenuEntry> pending_; // for when the menu is closed
    uint revision_ = 1;
    bool isOpen_ = false;
};
