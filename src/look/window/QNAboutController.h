#pragma once

class QNAboutBox;
class QWidget;

/// The about box of the program: there is one, made when it is first shown. Main thread only.
class QNAboutController {
  public:
    /// Above `window`, which must outlive the controller.
    explicit QNAboutController(QWidget& window);

    /// Whether the box says that the program is for 64 bit; not at first. Before the first showing.
    void setShows64BitMark(bool isShown) noexcept { shows64BitMark_ = isShown; }

    /// Shows the box in front, in the middle of the window's screen.
    void showWindow();

  private:
    QWidget& window_;
    bool shows64BitMark_ = false;
    QNAboutBox* box_ = nullptr; // the window owns it
};
