#include "platform/authorization/PrivilegedTool.h"

#include <cstdio>
#include <vector>

// authorization_probe PKEXEC TOOL ARGUMENT…: runs the tool as administrator, and prints what comes
// of it: "granted REPLY", or why not.
int main(int argc, char** argv) {
    if (argc < 3)
        return 2;
    constexpr const char* answers[] = {"granted", "cancelled",     "noPkexec", "noPolkit",
                                       "noAgent", "notAuthorized", "failed"};
    platform::PrivilegedTool tool({argv + 2, argv + argc},
                                  platform::PrivilegedTool::Rights::administrator, argv[1]);
    const auto answer = tool.authorize();
    std::printf("%s %s\n", answers[static_cast<int>(answer)], tool.run().c_str());
    return 0;
}
