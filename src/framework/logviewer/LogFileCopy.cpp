#include "framework/logviewer/LogFileCopy.h"

#include "platform/loop/DispatchQueue.h"
#include "platform/text/Texts.h"

#include <QSaveFile>

#include <algorithm>
#include <string>
#include <utility>

namespace QN::logviewer {

namespace {

constexpr std::uint64_t blockSize = std::uint64_t{1} << 20U;

/// The error, or an empty text. What is logged meanwhile does not count.
QString copy(const LogBytes& log, const QString& path) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return file.errorString();
    const std::uint64_t size = log.size();
    for (std::uint64_t place = 0; place < size;) {
        const std::string block =
            log.text(place, static_cast<std::size_t>(std::min(blockSize, size - place)));
        if (block.empty())
            return Texts::tr("The log can't be read to its end.");
        if (file.write(block.data(), static_cast<qint64>(block.size())) < 0)
            return file.errorString();
        place += block.size();
    }
    return file.commit() ? QString() : file.errorString();
}

} // namespace

void saveCopy(std::shared_ptr<const LogBytes> log, const QString& path,
              std::function<void(const QString& error)> done) {
    platform::DispatchQueue::global()->async([log = std::move(log), path,
                                              done = std::move(done)]() mutable {
        const QString error = copy(*log, path);
        platform::DispatchQueue::main()->async([done = std::move(done), error] { done(error); });
    });
}

} // namespace QN::logviewer
