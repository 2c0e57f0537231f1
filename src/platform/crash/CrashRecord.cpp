#include "platform/crash/CrashRecord.h"

#include "platform/base/Directories.h"
#include "platform/crash/CrashFolder.h"
#include "platform/crash/CrashWriter.h"
#include "platform/crash/LoadedModules.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <system_error>
#include <unistd.h>

namespace platform {

namespace {

constexpr mode_t ownersFolder = S_IRWXU;
constexpr mode_t ownersFile = S_IRUSR | S_IWUSR;
constexpr off_t roomForDeath = off_t{1} << 16U;

[[noreturn]] void fail(const std::string& path) {
    throw std::system_error(errno, std::generic_category(), path);
}

std::string nameOf(const CrashProgram& program) {
    return std::string(program.name).append("-").append(std::to_string(::getpid()));
}

std::string_view variable(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace

CrashRecord::CrashRecord(const std::string& folder, const CrashProgram& program)
    : path_(folder)
    , prepared_(std::string(".").append(nameOf(program)).append(preparedRecordEnding))
    , published_(nameOf(program).append(crashRecordEnding)) {
    try {
        open();
        writeBegin(program);
    } catch (...) {
        discard();
        throw;
    }
}

void CrashRecord::open() {
    if (!makeDirectories(path_, ownersFolder))
        fail(path_);
    folder_.reset(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder_)
        fail(path_);
    ::unlinkat(folder_.get(), prepared_.c_str(), 0); // of an earlier process with this pid
    file_.reset(::openat(folder_.get(), prepared_.c_str(),
                         O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, ownersFile));
    struct stat status {};
    if (!file_ || ::fstat(file_.get(), &status) != 0)
        fail(path_);
    device_ = status.st_dev;
    inode_ = status.st_ino;
    ::flock(file_.get(), LOCK_EX | LOCK_NB); // shows that we live
}

void CrashRecord::writeBegin(const CrashProgram& program) const {
    utsname system{};
    ::uname(&system);
    CrashWriter out(file_.get());
    out.text(crashRecordTitle).endLine();
    out.text("program ").oneLine(program.name).endLine();
    out.text("version ").oneLine(program.version).endLine();
    out.text("build ").oneLine(program.build).endLine();
    out.text("pid ").decimal(::getpid()).endLine();
    out.text("started ").decimal(std::time(nullptr)).endLine();
    out.text("kernel ").oneLine(system.sysname).text(" ").oneLine(system.release).endLine();
    out.text("machine ").oneLine(system.machine).endLine();
    out.text("desktop ").oneLine(variable("XDG_CURRENT_DESKTOP")).endLine();
    out.text("session ").oneLine(variable("XDG_SESSION_TYPE")).endLine();
    writeLoadedModules(out);
    if (!out.flush())
        fail(path_);
}

/// Some file systems cannot do that.
bool CrashRecord::reserve() const noexcept {
    const off_t size = ::lseek(file_.get(), 0, SEEK_CUR);
    return ::fallocate(file_.get(), FALLOC_FL_KEEP_SIZE, size, roomForDeath) == 0 ||
           errno == EOPNOTSUPP;
}

bool CrashRecord::isIntact() const noexcept {
    struct stat status {};
    return ::fstat(file_.get(), &status) == 0 && status.st_dev == device_ &&
           status.st_ino == inode_;
}

void CrashRecord::publish() const noexcept {
    ::flock(file_.get(), LOCK_UN); // the process may take long to die
    ::renameat(folder_.get(), prepared_.c_str(), folder_.get(), published_.c_str());
}

void CrashRecord::discard() const noexcept {
    if (folder_)
        ::unlinkat(folder_.get(), prepared_.c_str(), 0);
}

} // namespace platform
