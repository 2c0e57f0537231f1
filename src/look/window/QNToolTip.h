#pragma once

#include <QPoint>
#include <QPointer>
#include <QTextDocument>
#include <QTimer>
#include <QWidget>

/// The window of tool tips, in the colours of the theme: a few lines beside the mouse that explain
/// what lies below it. Goes when the mouse leaves that, when a button, a key or the wheel is used,
/// and after a while. Never takes the focus. Main thread only.
class QNToolTip final : public QWidget {
    Q_OBJECT

  public:
    /// The only one that is seen. Made when it is first asked for, and anew when the window that
    /// it was shown above has gone.
    static QNToolTip& shared();

    /// Plain text, in which every line is a paragraph.
    void setText(const QString& text);
    QString text() const { return document_.toPlainText(); }

    /// Shows it for `owner` beside a place of the desktop, on the same screen as far as windows
    /// know of theirs. Hides it when there is no text.
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
