#pragma once

#include <QAccessibleWidget>

class MVMuteImageView;

/// The mute button of an item for assistive tools: a check box that is checked while the program is
/// muted.
class AccessibleMute final : public QAccessibleWidget {
  public:
    explicit AccessibleMute(MVMuteImageView& view);

    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

  private:
    MVMuteImageView& view_;
};
