#pragma once

#include "framework/logviewer/LogBytes.h"

#include <QString>

#include <functional>
#include <memory>

namespace QN::logviewer {

/// Writes what the log holds now into a new file at `path`, away from the main thread, and calls
/// `done` on the main queue with an error, or an empty text. An existing file is replaced only when
/// all has been written. Main thread.
void saveCopy(std::shared_ptr<const LogBytes> log, const QString& path,
              std::function<void(const QString& error)> done);

} // namespace QN::logviewer
