#pragma once

class QString;

/// Create one while reading or drawing images of other programs. Qt's warnings about damaged images
/// (categories such as qt.svg, but also about fonts and colors that an image uses) are of no
/// interest on a terminal: they go to the reporter instead of Qt's message handler. Messages of
/// other threads and fatal messages are not affected. Filters may be nested. Main thread only.
class ImageWarningFilter {
  public:
    using Reporter = void (*)(const QString& message);

    /// Null, the default: warnings are dropped.
    static void setReporter(Reporter reporter) noexcept;

    ImageWarningFilter();
    ~ImageWarningFilter();
    ImageWarningFilter(const ImageWarningFilter&) = delete;
    ImageWarningFilter& operator=(const ImageWarningFilter&) = delete;
};
