#pragma once

#include "helper/TrayTypes.h"

#include <QDBusObjectPath>
#include <QObject>
#include <QString>

#include <functional>
#include <utility>

/// The icon as hosts see it: the object org.kde.StatusNotifierItem. It tells what it looks like and
/// passes on what a person does with it. Main thread only.
class StatusNotifierItem final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ title)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName)
    Q_PROPERTY(QString IconThemePath READ iconThemePath CONSTANT)
    Q_PROPERTY(QString OverlayIconName READ noIcon CONSTANT)
    Q_PROPERTY(QString AttentionIconName READ noIcon CONSTANT)
    Q_PROPERTY(TrayToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)

  public:
    struct Look {
        QString title; ///< also of the tool tip
        QString text;  ///< of the tool tip, below the title
        QString icon;

        bool operator==(const Look&) const = default;
    };

    /// What a person does.
    struct Actions {
        /// A click; `token` lets a window come to the front, empty if the host gave none.
        std::function<void(const QString& token)> activated;
        std::function<void()> secondaryActivated; ///< a middle click
        std::function<void(int delta)> scrolled;
        std::function<void()> menuWanted; ///< the host is about to show the menu
    };

    static QString path() { return QStringLiteral("/StatusNotifierItem"); }

    StatusNotifierItem(Actions actions, QString iconThemePath, const QString& menuPath);

    /// The token of the last action that the host gave one for; only once.
    QString takeToken() { return std::exchange(token_, {}); }

    /// Tells hosts of what is different.
    void setLook(const Look& look);

    static QString category() { return QStringLiteral("Hardware"); }
    static QString id() { return QStringLiteral("com.quarnel.Tonvale"); }
    QString title() const { return look_.title; }
    static QString status() { return QStringLiteral("Active"); }
    static int windowId() { return 0; }
    QString iconName() const { return look_.icon; }
    QString iconThemePath() const { return iconThemePath_; }
    static QString noIcon() { return {}; }
    TrayToolTip toolTip() const { return {look_.icon, {}, look_.title, look_.text}; }
    static bool itemIsMenu() { return false; }
    QDBusObjectPath menu() const { return menu_; }

  public Q_SLOTS:
    void Activate(int x, int y);
    void SecondaryActivate(int x, int y);
    void ContextMenu(int x, int y);
    void Scroll(int delta, const QString& orientation);
    void ProvideXdgActivationToken(const QString& token);

  Q_SIGNALS:
    void NewTitle();
    void NewIcon();
    void NewToolTip();
    void NewStatus(const QString& status);

  private:
    const Actions actions_;
    const QString iconThemePath_;
    const QDBusObjectPath menu_;
    Look look_;
    QString token_; // which the host gives before an action
};
