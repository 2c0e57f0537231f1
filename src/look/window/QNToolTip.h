#pragma once

#include <QPoint>
#include <QPointer>
#include <QTextDocument>
#include <QTimer>
#include <QWidget>

/// A tool tip in the theme's colours, beside the mouse. Disappears when the mouse leaves the
/// object, when a button, a key or the wheel is used, and after a while. Never takes the focus.
/// Main thread only.
class QNToolTip final : public QWidget {
    Q_OBJECT

  public:
    /// The only visible tool tip. Created on first use, and again if its parent window was
    /// destroyed.
    static QNToolTip& shared();

    /// Sets the plain text; every line is a paragraph.
    void setText(const QString& text);
    QString text() const { return document_.toPlainText(); }

    /// Shows it for `owner` beside a position on the desktop, on the same screen if positions are
    /// known. Hides it if there is no text.
    void showAt(const QPoint& place, QWidget& owner);

    bool eventFilter(QObject* watched, QEvent* event) override;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void hideEvent(QHideEvent* event) override;

  private:
    QNToolTip();

    void fitText();
    QRect placeFor(const QPoint& mouse, const QRect& screen) const;
    bool isOfOwner(const QObject* object) const;

    QTextDocument document_;
    QTimer time_;
    QPointer<QWidget> owner_; // null while it is hidden
    QMetaObject::Connection endOfOwner_;
};
