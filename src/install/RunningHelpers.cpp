#include "install/RunningHelpers.h"

#include "platform/bundle/Bundle.h"
#include "platform/processes/ProcessInfo.h"

#include <system_error>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/// Empty if the program lies in none.
fs::path bundleOf(const fs::path& program) {
    const fs::path contents = program.parent_path().parent_path();
    const bool isInBundle =
        program.parent_path().filename() == "Linux" && contents.filename() == "Contents";
    return isInBundle ? contents.parent_path() : fs::path();
}

bool isHelper(const fs::path& bundle, const std::string& identifier,
              const std::string& bundleName) {
    std::error_code error;
    if (!fs::exists(bundle / "Contents/Info.plist", error))
        return bundle.filename() == bundleName;
    return platform::Bundle(bundle / "Contents").identifier() == identifier;
}

} // namespace

std::vector<RunningHelper> runningHelpers(const std::string& identifier,
                                          const std::string& bundleName) {
    std::vector<RunningHelper> helpers;
    for (const pid_t process : platform::processesOf(::geteuid())) {
        const auto program = platform::executablePath(process);
        const fs::path bundle = program ? bundleOf(*program) : fs::path();
        if (!bundle.empty() && isHelper(bundle, identifier, bundleName))
            helpers.push_back({process, bundle, platform::runsFile(process, *program)});
    }
    return helpers;
}
