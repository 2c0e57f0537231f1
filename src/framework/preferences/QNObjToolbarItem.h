#pragma once

#include <QIcon>
#include <QRadioButton>
#include <QString>

#include <memory>

class QNPreferencesItemViewController;

/// An item of a preferences window's toolbar: a picture with a label below, which represents a
/// pane. The one of the pane that is shown is checked; to assistive tools they are radio buttons.
/// The left and right arrow keys choose the neighbours. Main thread only.
class QNObjToolbarItem final : public QRadioButton {
    Q_OBJECT

  public:
    QNObjToolbarItem(QString itemIdentifier, const QString& label, const QIcon& icon);
    ~QNObjToolbarItem() override;

    const QString& itemIdentifier() const noexcept { return itemIdentifier_; }
    QString label() const { return text(); }

    /// The pane; the item keeps it alive.
    const std::shared_ptr<QNPreferencesItemViewController>& representedObject() const noexcept {
        return representedObject_;
    }
    void setRepresentedObject(std::shared_ptr<QNPreferencesItemViewController> object);

    /// The width that picture and label need, in pixels.
    [[nodiscard]] int minimumItemWidth() const;

    QSize sizeHint() const override;

  Q_SIGNALS:
    /// The user wants the item that lies so many places after this one.
    void neighbourWanted(int offset);

  protected:
    bool hitButton(const QPoint& place) const override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    const QString itemIdentifier_;
    std::shared_ptr<QNPreferencesItemViewController> representedObject_;
};
