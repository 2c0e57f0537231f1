#pragma once

#include <QWidget>

/// The area of a window below its own title bar. Contains one widget, which fills it. Main thread
/// only.
class MVCustomWindowContentView final : public QWidget {
    Q_OBJECT

  public:
    /// Takes the content over.
    explicit MVCustomWindowContentView(QWidget* content, QWidget* parent = nullptr);

    QWidget& content() const noexcept { return *content_; }

  protected:
    void resizeEvent(QResizeEvent* event) override;

  private:
    QWidget* const content_;
};
