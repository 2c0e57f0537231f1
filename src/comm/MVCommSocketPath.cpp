#include "comm/MVCommSocketPath.h"

#include "platform/base/Directories.h"

#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string socketIn(const std::string& folder) {
    return folder + "/" + kMVCommSocketName;
}

bool belongsToAnother(const std::string& path, uid_t user) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && status.st_uid != user;
}

} // namespace

MVCommSocketPlaces MVCommCurrentSocketPlaces() {
    const char* const overriding = std::getenv("TONVALE_SOCKET_DIR");
    return {overriding != nullptr ? overriding : "", platform::sharedTemporaryDirectory(),
            platform::runtimeDirectory(), ::geteuid()};
}

std::string MVCommMainSocketPath(const MVCommSocketPlaces& places) {
    if (!places.overridingFolder.empty())
        return socketIn(places.overridingFolder);
    std::string shared = socketIn(places.sharedFolder);
    if (belongsToAnother(shared, places.user) && !places.runtimeFolder.empty())
        return socketIn(places.runtimeFolder);
    return shared;
}

std::vector<std::string> MVCommCandidateSocketPaths(const MVCommSocketPlaces& places) {
    if (!places.overridingFolder.empty())
        return {socketIn(places.overridingFolder)};
    std::vector<std::string> paths;
    const std::string shared = socketIn(places.sharedFolder);
    if (!belongsToAnother(shared, places.user))
        paths.push_back(shared);
    if (!places.runtimeFolder.empty())
        paths.push_back(socketIn(places.runtimeFolder));
    return paths;
}
