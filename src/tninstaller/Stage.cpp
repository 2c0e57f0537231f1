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
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>
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
    return name.starts_with(prefix) && name.size() == prefix.size() + randomDigits;
}

FileDescriptor openFolder(int parent, const std::string& name) {
    return FileDescriptor(
        ::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

void removeOrTell(const GuardedFolder& folder, const std::string& name) noexcept {
    try {
        removeTree(folder.descriptor(), name);
    } catch (const std::exception& failure) {
        platform::systemLog(platform::LogPriority::warning, "Couldn't remove %s/%s: %s",
                            folder.path().c_str(), name.c_str(), failure.what());
    }
}

} // namespace

void Stage::sweep(const GuardedFolder& folder) {
    DirectoryReader names(openFolder(folder.descriptor(), "."), folder.path(),
                          InstallCode::notWritten);
    std::vector<std::string> stages;
    while (const char* const name = names.next()) {
        if (isStage(name))
            stages.emplace_back(name);
    }
    for (const std::string& stage : stages)
        removeOrTell(folder, stage);
}

Stage::Stage(const GuardedFolder& folder) : folder_(folder), name_(randomName()) {
    if (::mkdirat(folder.descriptor(), name_.c_str(), S_IRWXU) == 0)
        stage_ = openFolder(folder.descriptor(), name_);
    if (!stage_)
        throw failureAt(folder.path(), InstallCode::notWritten);
}

Stage::~Stage() {
    removeOrTell(folder_, name_);
}

void Stage::putInPlace(const std::string& name) {
    const auto rename = [&](unsigned how) {
        return ::renameat2(stage_.get(), name.c_str(), folder_.descriptor(), name.c_str(), how) ==
               0;
    };
    if (::syncfs(stage_.get()) != 0 ||
        !(rename(RENAME_NOREPLACE) || (errno == EEXIST && rename(RENAME_EXCHANGE))) ||
        ::fsync(folder_.descriptor()) != 0)
        throw failureAt(folder_.path() + '/' + name, InstallCode::notWritten);
}

bool Stage::takeAway(const std::string& name) {
    if (::renameat2(folder_.descriptor(), name.c_str(), stage_.get(), name.c_str(),
                    RENAME_NOREPLACE) == 0)
        return true;
    if (errno == ENOENT)
        return false;
    throw failureAt(folder_.path() + '/' + name, InstallCode::notRemoved);
}

void Stage::clear(const std::string& name) {
    removeTree(stage_.get(), name);
}
