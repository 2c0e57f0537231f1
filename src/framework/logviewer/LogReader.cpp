#include "framework/logviewer/LogReader.h"

#include "framework/logviewer/LogReaderWorker.h"

#include <utility>

namespace QN::logviewer {

std::unique_ptr<LogReader> LogReader::start(const std::string& path, Handler handler) {
    auto file = LogBytes::open(path);
    if (!file)
        return nullptr;
    auto worker = std::make_shared<Worker>(file, path, std::move(handler));
    worker->start();
    return std::unique_ptr<LogReader>(new LogReader(std::move(file), std::move(worker)));
}

LogReader::LogReader(std::shared_ptr<const LogBytes> file, std::shared_ptr<Worker> worker)
    : file_(std::move(file)), worker_(std::move(worker)) {}

LogReader::~LogReader() {
    worker_->stop();
}

} // namespace QN::logviewer
