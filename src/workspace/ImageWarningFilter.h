#pragma once

class QString;

/// While one lives, images of other programs are read or drawn. What Qt says of damaged ones
/// (categories such as qt.svg, but also of fonts and colors that an image asks for) concerns no
/// person at a terminal: it goes to the reporter instead of Qt's message handler. What other
/// threads say, and fatal messages, go where they always do. They may be nested. Main thread only.
class ImageWarningFilter {
  public:
    using Reporter = void (*)(const QString& message);

    /// Null, as in the beginning: nobody is told.
    static void setReporter(Reporter reporter) noexcept;

    ImageWarningFilter();
    ~ImageWarningFilter();
    ImageWarningFilter(const ImageWarningFilter&) = delete;
    ImageWarningFilter& operator=(const ImageWarningFilter&) = delete;
};
