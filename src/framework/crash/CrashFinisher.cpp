#include "framework/crash/CrashFinisher.h"

#include "framework/crash/CrashDetails.h"
#include "framework/crash/CrashReportText.h"
#include "framework/redaction/Redactor.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/SystemLog.h"
#include "platform/base/WallClock.h"
#include "platform/crash/CrashFolder.h"
#include "platform/crash/CrashHandler.h"
#include "platform/loop/DispatchQueue.h"
#include "platform/processes/SystemFacts.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

using platform::FileDescriptor;

namespace {

namespace fs = std::filesystem;

constexpr std::size_t mostReports = 20;
constexpr std::int64_t secondsOfMinute = 60;
constexpr std::int64_t oldest = std::int64_t{30} * 24 * 60 * secondsOfMinute;
constexpr std::size_t longestRecord = std::size_t{1} << 20U;

std::int64_t now() {
    return std::chrono::floor<std::chrono::seconds>(platform::WallClock::now())
        .time_since_epoch()
        .count();
}

std::string pathOf(const std::string& folder, const std::string& name) {
    return std::string(folder).append("/").append(name);
}

FileDescriptor openForReading(const std::string& path) {
    return FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
}

/// Whether no living process holds the lock on it.
bool isLeftOver(const std::string& path) {
    const FileDescriptor file = openForReading(path);
    return file && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0;
}

/// Held by the process that works on the folder; nothing if there is no folder.
FileDescriptor waitForLock(const std::string& folder) {
    FileDescriptor lock = openForReading(folder);
    while (lock && ::flock(lock.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return lock;
}

std::string contentOf(const FileDescriptor& file) {
    std::string content(longestRecord, '\0');
    std::size_t size = 0;
    while (size < content.size()) {
        const ssize_t part = ::read(file.get(), content.data() + size, content.size() - size);
        if (part == 0 || (part < 0 && errno != EINTR))
            break;
        size += static_cast<std::size_t>(std::max<ssize_t>(part, 0));
    }
    content.resize(size);
    return content;
}

bool writeAll(const FileDescriptor& file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t part = ::write(file.get(), text.data(), text.size());
        if (part < 0 && errno == EINTR)
            continue;
        if (part <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(part));
    }
    return true;
}

/// "NAME_2026-11-27-101112.crash", with a number if there is one already.
std::string reportName(const std::string& program, std::int64_t time, unsigned number) {
    const std::time_t seconds = time;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "_%Y-%m-%d-%H%M%S", &parts);
    std::string name(program);
    name.append(date.data());
    if (number > 1)
        name.append("-").append(std::to_string(number));
    return name.append(platform::crashReportEnding);
}

std::string freePath(const std::string& folder, const std::string& program, std::int64_t time) {
    for (unsigned number = 1;; ++number) {
        std::string path = pathOf(folder, reportName(program, time, number));
        if (::access(path.c_str(), F_OK) != 0)
            return path;
    }
}

Redactor redactorOfThisMachine() {
    return Redactor(platform::PersonalFacts::ofThisMachine());
}

/// Before the number of its process.
std::string programOfRecord(const std::string& name) {
    return name.substr(0, name.rfind('-'));
}

} // namespace

CrashFinisher::CrashFinisher(std::string folder) : folder_(std::move(folder)) {}

std::vector<CrashFinisher::Item> CrashFinisher::itemsIn(const std::string& folder,
                                                        std::string_view ending) {
    std::vector<Item> items;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        const std::string name = at->path().filename();
        struct stat status {};
        if (name.ends_with(ending) && ::lstat(at->path().c_str(), &status) == 0 &&
            S_ISREG(status.st_mode))
            items.push_back({name, status.st_mtim.tv_sec});
    }
    return items;
}

bool CrashFinisher::hasRecords() const {
    return !folder_.empty() && !itemsIn(folder_, platform::crashRecordEnding).empty();
}

unsigned CrashFinisher::finish() const {
    const FileDescriptor lock = waitForLock(folder_);
    unsigned finished = 0;
    for (const Item& record : itemsIn(folder_, platform::crashRecordEnding))
        finished += finishRecord(record) ? 1U : 0U;
    removeLeftovers();
    removeSurplus();
    return finished;
}

bool CrashFinisher::finishRecord(const Item& item) const {
    const std::string path = pathOf(folder_, item.name);
    const std::string record = contentOf(openForReading(path));
    const auto details = CrashDetails::parse(record);
    const Redactor redactor = redactorOfThisMachine();
    const std::string text =
        details ? crashReportText(*details, CrashSurroundings::ofThisMachine(), redactor)
                : crashReportText(record, redactor);
    const bool isDated = details && details->time != 0;
    if (!store(programOfRecord(item.name), isDated ? details->time : item.time, text))
        return false;
    ::unlink(path.c_str());
    return true;
}

/// Appears as a whole, with the time of the crash.
bool CrashFinisher::store(const std::string& program, std::int64_t time,
                          const std::string& text) const {
    constexpr mode_t ownersOnly = S_IRUSR | S_IWUSR;
    const std::string temporary = pathOf(folder_, ".new");
    const FileDescriptor file(::open(
        temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, ownersOnly));
    const timespec times[] = {{static_cast<std::time_t>(time), 0},
                              {static_cast<std::time_t>(time), 0}};
    const std::string report = freePath(folder_, program, time);
    const bool isStored = file && writeAll(file, text) && ::futimens(file.get(), times) == 0 &&
                          ::rename(temporary.c_str(), report.c_str()) == 0;
    if (!isStored) {
        platform::systemLog(platform::LogPriority::error, "Couldn't write the crash report %s: %s",
                            report.c_str(), std::strerror(errno));
        ::unlink(temporary.c_str());
    }
    return isStored;
}

bool CrashFinisher::reportSignal(const platform::CrashProgram& program, int signal) const {
    constexpr mode_t ownersFolder = S_IRWXU;
    if (folder_.empty() || !platform::isCrashWritingOn(folder_) ||
        !platform::makeDirectories(folder_, ownersFolder))
        return false;
    CrashDetails details;
    details.program = program.name;
    details.version = program.version;
    details.build = program.build;
    details.kernel = std::string("Linux ").append(platform::productBuild());
    details.time = now();
    details.signal = signal;
    details.isWhole = true;
    const FileDescriptor lock = waitForLock(folder_);
    return store(
        program.name, details.time,
        crashReportText(details, CrashSurroundings::ofThisMachine(), redactorOfThisMachine()));
}

/// Of programs that were killed.
void CrashFinisher::removeLeftovers() const {
    for (const Item& item : itemsIn(folder_, platform::preparedRecordEnding)) {
        const std::string path = pathOf(folder_, item.name);
        if (item.time < now() - secondsOfMinute && isLeftOver(path))
            ::unlink(path.c_str());
    }
}

void CrashFinisher::removeSurplus() const {
    std::vector<Item> reports = itemsIn(folder_, platform::crashReportEnding);
    std::sort(reports.begin(), reports.end(),
              [](const Item& one, const Item& other) { return one.time > other.time; });
    for (std::size_t i = 0; i < reports.size(); ++i) {
        if (i >= mostReports || reports[i].time < now() - oldest)
            ::unlink(pathOf(folder_, reports[i].name).c_str());
    }
}

void tendCrashRecords() {
    platform::DispatchQueue::global()->async([] {
        platform::reserveCrashRoom();
        const CrashFinisher finisher(platform::crashFolder());
        if (finisher.hasRecords())
            finisher.finish();
    });
}
