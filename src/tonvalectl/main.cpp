#include "tonvalectl/Command.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/Messages.h"
#include "tonvalectl/Run.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

constexpr const char* help = R"(Usage: tonvalectl COMMAND [OPTIONS]

Sets the volume of each program by way of the running Tonvale.

  list                   programs with volume, mute, level and process
      --all              also those that are remembered and not running
      --names            nothing but names
      --ignored          the names of programs that are ignored
  get NAME               one program's volume
  set NAME PERCENT       set it: 40, 40%, or a step: +5%, -5%
  mute NAME              mute, unmute, or the one that it is not
  unmute NAME
  toggle NAME
  ignore NAME            neither show nor touch it from now on; it need not run
  unignore NAME          undo that
  forget NAME            forget all that is remembered of it
  default [PERCENT|off]  the volume that programs begin with that were never seen
  show                   bring the window to the front
  monitor                print what changes, until Tonvale ends

  --json                 for list, get and monitor: print JSON
  --help, --version      print and exit

A NAME may be shortened as long as it fits one program only; upper and lower case are the same.
Exit codes: 0 done, 1 refused, 2 wrong arguments, 3 Tonvale is not running, 4 no such program,
5 doubtful name, 6 bad number, 7 the volume can't be set, 8 no session bus. See tonvalectl(1).
)";

void carryOut(const std::vector<std::string>& arguments) {
    const Command command = Command::parse(arguments);
    if (command.verb == Command::Verb::help)
        std::fputs(Messages::text(help).c_str(), stdout);
    else if (command.verb == Command::Verb::version)
        std::puts("tonvalectl " TONVALE_VERSION);
    else
        run(command);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure(ExitCode::failed, Messages::text("The output can't be written."));
}

ExitCode tell(ExitCode code, const char* why) {
    std::fprintf(stderr, "tonvalectl: %s\n", why);
    return code;
}

} // namespace

int main(int argc, char** argv) {
    Messages::prepare();
    try {
        carryOut({argv + 1, argv + argc});
        return static_cast<int>(ExitCode::success);
    } catch (const Failure& failure) {
        return static_cast<int>(tell(failure.code(), failure.what()));
    } catch (const std::exception& exception) {
        return static_cast<int>(tell(ExitCode::failed, exception.what()));
    }
}
