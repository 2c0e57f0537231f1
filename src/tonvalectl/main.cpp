#include "platform/crash/CrashHandler.h"
#include "platform/language/PlainTexts.h"
#include "tonvalectl/Command.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/Verbs.h"

#include <clocale>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

void carryOut(const std::vector<std::string>& arguments) {
    const Command command = Command::parse(arguments);
    platform::handleCrashes({.name = "tonvalectl", .version = TONVALE_VERSION, .build = ""});
    command.verb->run(command);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure(ExitCode::failed, PlainTexts::tr("The output can't be written."));
}

ExitCode tell(ExitCode code, const char* why) {
    std::fprintf(stderr, "tonvalectl: %s\n", why);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    std::setlocale(LC_ALL, "");
    try {
        carryOut({argv + 1, argv + argc});
        return static_cast<int>(ExitCode::success);
    } catch (const Failure& failure) {
        return static_cast<int>(tell(failure.code(), failure.what()));
    } catch (const std::exception& exception) {
        return static_cast<int>(tell(ExitCode::failed, exception.what()));
    }
}
