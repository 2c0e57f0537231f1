#pragma once

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QSize>
#include <QString>
#include <QWidget>

#include <memory>
#include <utility>

/// The base of every pane of a preferences window: its entry in the toolbar, and its view, which is
/// made when it is first shown. Main thread only.
class QNPreferencesItemViewController : public QObject {
    Q_OBJECT

  public:
    /// A new pane of that class.
    template <class Pane, class... A>
    static std::shared_ptr<Pane> controller(A&&... arguments) {
        return std::make_shared<Pane>(std::forward<A>(arguments)...);
    }

    ~QNPreferencesItemViewController() override;

    /// The text and the picture of the toolbar's item.
    virtual QString label() const = 0;
    virtual QIcon icon() const = 0;

    /// Of the toolbar's item; differs from that of all other panes of a window.
    virtual QString identifier() const = 0;

    /// Whether the user may change the size of the window while it shows the pane.
    virtual bool canResizeWindow() const { return false; }

    /// The pane's view, created on the first call. The window that shows it becomes its parent.
    QWidget& view();

    [[nodiscard]] bool isViewLoaded() const noexcept { return view_ != nullptr; }

    /// The size of the view as designed, in pixels.
    [[nodiscard]] QSize viewOriginalSize();

    /// Whether the toolbar's item can be used.
    virtual bool validateToolbarItem() const { return true; }

    /// Called before the pane is shown.
    virtual void willSelect() {}

    /// Called when the window closes, whichever pane it shows.
    virtual void windowWillClose() {}

  protected:
    QNPreferencesItemViewController() = default;

    /// Makes the view, in the size that its layout wants.
    virtual std::unique_ptr<QWidget> loadView() = 0;

  private:
    QPointer<QWidget> view_;
    QSize viewOriginalSize_;
};
