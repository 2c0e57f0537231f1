#pragma once

#include <QString>

class QWidget;

/// The application's part in support reports. Main thread only.
namespace SupportInformation {

/// Shows the window for support reports above `parent`; there is one at most. The report has the
/// log files of all runs in it, which lie beside `logFile`.
void show(QWidget& parent, const QString& logFile);

/// Deletes what an earlier run may have left behind. Returns at once.
void cleanUp();

} // namespace SupportInformation
