#include "plugin/memory/PreferencesFile.h"

#include "platform/base/Directories.h"
#include "platform/base/FileDescriptor.h"
#include "platform/base/SystemLog.h"
#include "platform/plist/PropertyListNode.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

constexpr const char* name = "com.quarnel.Tonvale.plist";

/// The path as the application writes it.
std::string inFolder(const std::string& folder, const char* rest) {
    return folder.empty() ? folder : (std::filesystem::path(folder) / rest).string();
}

/// Nothing, with errno set, on failure. Not much more than a property list may have is read.
std::optional<std::vector<char>> contentOf(int file) {
    std::vector<char> content;
    std::array<char, 16384> part{};
    while (content.size() <= platform::propertyListBytes) {
        const ssize_t count = ::read(file, part.data(), part.size());
        if (count == 0)
            return content;
        if (count > 0)
            content.insert(content.end(), part.data(), part.data() + count);
        else if (errno != EINTR)
            return std::nullopt;
    }
    return content;
}

} // namespace

PreferencesFile PreferencesFile::standard() {
    return {inFolder(platform::preferencesDirectory(), name),
            inFolder(inFolder(platform::localLibraryDirectory(), "Shared"), name)};
}

PreferencesFile::PreferencesFile(std::string own, std::string copy)
    : own_(std::move(own)), standardOwn_(own_), copy_(std::move(copy)) {}

const std::optional<Preferences>& PreferencesFile::read() {
    Reading reading = readFile(own_, false);
    report(reading);
    const State own = reading.state;
    if (isToBeReplaced(own) && standardOwn_ != own_)
        reading = readFile(standardOwn_, false);
    if (isToBeReplaced(own) && reading.state != State::good)
        reading = readFile(copy_, true);
    if (reading.state == State::missing)
        reading.state = own;
    if (reading.state == State::good)
        last_ = std::move(reading.preferences);
    else if (reading.state == State::missing && !last_)
        last_.emplace();
    return last_;
}

/// A damaged file of our own will be repaired; until then our last values are newer than other
/// files.
bool PreferencesFile::isToBeReplaced(State own) const {
    return own == State::missing || (own == State::bad && !last_);
}

/// The copy must be a regular file, not a link to somewhere else.
PreferencesFile::Reading PreferencesFile::readFile(const std::string& path, bool isCopy) {
    if (path.empty())
        return {State::missing};
    // A pipe in the file's place would otherwise hold us up.
    const platform::FileDescriptor file(::open(
        path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (isCopy ? O_NOFOLLOW : 0)));
    if (!file && (isCopy || errno == ENOENT || errno == ENOTDIR))
        return {State::missing};
    if (!file)
        return {State::bad, {}, std::strerror(errno)};
    struct stat status {};
    const bool isFile = ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode);
    if (isCopy && (!isFile || status.st_uid != ::geteuid()))
        return {State::missing};
    if (!isFile)
        return {State::bad, {}, "it is not a regular file"};
    const auto content = contentOf(file.get());
    if (!content)
        return {State::bad, {}, std::strerror(errno)};
    if (content->size() > platform::propertyListBytes)
        return {State::bad, {}, "it is too large"};
    auto preferences = parsePreferences({content->data(), content->size()});
    if (!preferences)
        return {State::bad, {}, "it is damaged"};
    preferences->file = path;
    return {State::good, *std::move(preferences)};
}

void PreferencesFile::report(const Reading& own) {
    const bool isBad = own.state == State::bad;
    if (isBad && !reported_)
        platform::systemLog(
            platform::LogPriority::warning,
            "Couldn't read the preferences in %s, so the last values stay in effect: "
            "%s",
            own_.c_str(), own.reason.c_str());
    reported_ = isBad;
}
