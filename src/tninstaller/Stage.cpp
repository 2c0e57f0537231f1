#include "tninstaller/Stage.h"

#include "tninstaller/DirectoryReader.h"
#include "tninstaller/InstallFailure.h"
#include "tninstaller/TreeRemoval.h"

#include "platform/base/SystemLog.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <vector>

using platform::FileDescriptor;

namespace {

constexpr std::string_view prefix = ".tninstaller-";
constexpr std::size_t randomDigits = 32;

std::string randomName() {
    std::array<std::uint64_t, 2> numbers{};
    if (::getrandom(numbers.data(), sizeof numbers, 0) != static_cast<ssize_t>(sizeof numbers))
        throw failureAt("getrandom()", InstallCode::internal);
    std::array<char, randomDigits + 1> digits{};
    std::snprintf(digits.data(), digits.size(), "%016lx%016lx", numbers[0], numbers[1]);
    return std::string(prefix) + digits.data();
}

bool isStage(std::string_view name) {
    return name.starts_with(prefix) && name.size() == prefix.size() + randomDigits &&
           name.find_first_not_of("0123456789abcdef", prefix.size()) == std::string_view::npos;
}

FileDescriptor openFolder(int parent, const std::string& name) {
    return FileDescriptor(
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

bool lock(const FileDescriptor& folder) noexcept {
    return ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0;
}

bool isOwn(const FileDescriptor& folder) noexcept {
    struct stat status {};
    return ::fstat(folder.get(), &status) == 0 && status.st_uid == ::geteuid();
}

void removeOrTell(const GuardedFolder& folder, const std::string& name) noexcept {
    try {
        removeTree(folder.descriptor(), name);
    } catch (const std::exception& failure) {
        platform::systemLog(platform::LogPriority::warning, "Couldn't remove %s/%s: %s",
                            folder.path().c_str(), name.c_str(), failure.what());
    }
}

std::vector<std::string> stagesIn(const GuardedFolder& folder) {
    std::vector<std::string> stages;
    FileDescriptor readable = openFolder(folder.descriptor(), ".");
    if (!readable && errno == EACCES)
        return stages; // one may write there without reading
    DirectoryReader names(std::move(readable), folder.path(), InstallCode::notWritten);
    while (const char* const name = names.next()) {
        if (isStage(name))
            stages.emplace_back(name);
    }
    return stages;
}

} // namespace

void Stage::sweep(const GuardedFolder& folder) noexcept {
    try {
        for (const std::string& name : stagesIn(folder)) {
            const FileDescriptor stage = openFolder(folder.descriptor(), name);
            if (stage && isOwn(stage) && lock(stage))
                removeOrTell(folder, name);
        }
    } catch (const std::exception& failure) {
        platform::systemLog(platform::LogPriority::warning, "Couldn't look for leftovers: %s",
                            failure.what());
    }
}

std::unique_ptr<Stage> Stage::make(const std::string& path, GuardedFolder::Trust trust) {
    return begin(path, trust, Missing::make);
}

std::unique_ptr<Stage> Stage::find(const std::string& path, GuardedFolder::Trust trust) {
    return begin(path, trust, Missing::leave);
}

std::unique_ptr<Stage> Stage::begin(const std::string& path, GuardedFolder::Trust trust,
                                    Missing missing) {
    constexpr int tries = 100;
    for (int left = tries; left > 0; --left) {
        auto folder = missing == Missing::make ? GuardedFolder::make(path, trust)
                                               : GuardedFolder::find(path, trust);
        if (!folder)
            return nullptr;
        sweep(*folder);
        std::unique_ptr<Stage> stage(new Stage(*std::move(folder)));
        if (stage->open())
            return stage;
    }
    throw InstallFailure(InstallCode::notWritten, path + ": it vanishes again and again");
}

Stage::Stage(GuardedFolder folder) : folder_(std::move(folder)) {}

/// False if another tool has removed the folder, or swept the stage before it was locked.
bool Stage::open() {
    std::string name = randomName();
    if (::mkdirat(folder_.descriptor(), name.c_str(), S_IRWXU) != 0) {
        if (errno == ENOENT)
            return false;
        throw failureAt(folder_.path(), InstallCode::notWritten);
    }
    name_ = std::move(name);
    stage_ = openFolder(folder_.descriptor(), name_);
    if (!stage_ && errno != ENOENT)
        throw failureAt(folder_.path(), InstallCode::notWritten);
    struct stat status {};
    return stage_ && (lock(stage_) || errno != EWOULDBLOCK) &&
           ::fstatat(folder_.descriptor(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

Stage::~Stage() {
    if (!name_.empty())
        removeOrTell(folder_, name_);
}

void Stage::synchronise() {
    if (::syncfs(stage_.get()) != 0)
        throw failureAt(folder_.path(), InstallCode::notWritten);
}

void Stage::putInPlace(const std::string& name) {
    const auto rename = [&](unsigned how) {
        return ::renameat2(stage_.get(), name.c_str(), folder_.descriptor(), name.c_str(), how) ==
               0;
    };
    const std::string place = folder_.path() + '/' + name;
    bool isDone = rename(RENAME_NOREPLACE) || (errno == EEXIST && rename(RENAME_EXCHANGE));
    if (!isDone && (errno == EINVAL || errno == ENOSYS)) {
        isDone = rename(0); // where there is none, or an empty folder
        if (!isDone && (errno == ENOTEMPTY || errno == EEXIST || errno == ENOTDIR))
            throw InstallFailure(InstallCode::notWritten,
                                 place + ": this file system cannot exchange it in one step; it "
                                         "has to be uninstalled first");
    }
    if (!isDone || ::fsync(folder_.descriptor()) != 0)
        throw failureAt(place, InstallCode::notWritten);
}

bool Stage::takeAway(const std::string& name) {
    if (::renameat(folder_.descriptor(), name.c_str(), stage_.get(), name.c_str()) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    throw failureAt(folder_.path() + '/' + name, InstallCode::notRemoved);
}

void Stage::clear() {
    const std::string name = std::exchange(name_, {});
    removeTree(folder_.descriptor(), name);
}
