#pragma once

#include "look/window/MVCustomWindow.h"
#include "platform/base/MonotonicClock.h"
#include "platform/window/Alert.h"

#include <QList>

class BarButton;
class QPlainTextEdit;

/// An alert with the look of our windows: a sign for its kind, its title in bold, its text, the
/// details on request, and its buttons, the default one last. Escape closes it. Main thread only.
class AlertWindow final : public MVCustomWindow {
    Q_OBJECT

  public:
    /// Above `parent`, which owns it; null: in the middle of the screen.
    AlertWindow(const platform::Alert& alert, QWidget* parent);

    /// Has alerts shown so from now on. A test that answers alerts itself replaces it.
    static void install();

    /// The button that was pressed, or what closing counts as.
    [[nodiscard]] platform::Alert::Button answer() const noexcept { return answer_; }

    /// From the first on the line to the last.
    [[nodiscard]] const QList<BarButton*>& buttons() const noexcept { return buttons_; }

    /// Opens it in its place.
    void open();

  Q_SIGNALS:
    void ended();

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget* makeText(const platform::Alert& alert);
    QWidget* makeButtons(const platform::Alert& alert);
    void addButton(const QString& text, platform::Alert::Button button);
    void toggleDetails();
    void fit();
    bool isTooEarly() const;

    const bool isGuarded_;
    platform::Alert::Button answer_;
    QList<BarButton*> buttons_;
    BarButton* detailsButton_ = nullptr;
    QPlainTextEdit* details_ = nullptr;
    const platform::MonotonicClock::time_point made_ = platform::MonotonicClock::now();
};
