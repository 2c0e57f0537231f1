#include "app/CommandLine.h"

#include "platform/files/Bundle.h"
#include "platform/text/Localization.h"

#include <cstdio>

namespace {

QString text(const char* english) {
    return platform::localized(QString::fromUtf8(english), "CommandLine");
}

QString helpText() {
    constexpr const char* english = R"(Usage: Tonvale [OPTIONS]

Sets the volume of each program separately. A second start brings the window of the running one to
the front.

  --debug            write everything to the log; same as holding Control and Meta at the start
  --screenshot FILE  save a picture of the window to FILE at the end
  --help             print this text and exit
  --version          print the version and exit

Options of Qt, such as --platform and --style, work too. The log is Tonvale/Tonvale.log in
$XDG_STATE_HOME (~/.local/state). See also tonvale(1).
)";
    return text(english);
}

void print(const QString& line) {
    std::fputs(line.toUtf8().constData(), stdout);
}

} // namespace

QStringList CommandLine::options() {
    return {debug, help, screenshot, version};
}

bool CommandLine::answer(const QNOptions& options) {
    if (options.contains(help)) {
        print(helpText());
        return true;
    }
    if (!options.contains(version))
        return false;
    print(platform::formatted(QStringLiteral("Tonvale %@\n"), platform::Bundle::main().version()));
    return true;
}
