#include "app/CommandLine.h"

#include "framework/application/OptionParser.h"
#include "platform/base/MarkedText.h"
#include "platform/bundle/Bundle.h"
#include "platform/language/PlainTexts.h"

#include <QList>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

namespace {

std::string helpText() {
    return PlainTexts::tr(R"(Usage: Tonvale [OPTIONS]

Sets the volume of each program separately. A second start brings the window of the running one to
the front.

  --action NAME      open the preferences ("preferences"), or mute what plays ("mute-all")
  --debug            write everything to the log; same as holding Control and Meta at the start
  --screenshot FILE  save a picture of the window to FILE at the end
  -h, --help         print this text and exit
  --version          print the version and exit

Options of Qt, such as --platform and --style, work too. The log is Tonvale/Tonvale.log in
$XDG_STATE_HOME (~/.local/state). See also tonvale(1).
)");
}

constexpr int wrongUsage = 2;

/// How an option of Qt takes its value.
enum class Value : std::uint8_t { none, next, nextOrJoined };

struct QtOption {
    QLatin1String name;
    Value value;
};

/// With one dash or two; those of X11 mean nothing on Wayland.
constexpr QtOption qtOptions[] = {{QLatin1String("display"), Value::next},
                                  {QLatin1String("dograb"), Value::none},
                                  {QLatin1String("geometry"), Value::next},
                                  {QLatin1String("icon"), Value::next},
                                  {QLatin1String("name"), Value::next},
                                  {QLatin1String("nograb"), Value::none},
                                  {QLatin1String("platform"), Value::next},
                                  {QLatin1String("platformpluginpath"), Value::next},
                                  {QLatin1String("platformtheme"), Value::next},
                                  {QLatin1String("plugin"), Value::next},
                                  {QLatin1String("qdebug"), Value::none},
                                  {QLatin1String("qdevel"), Value::none},
                                  {QLatin1String("qmljsdebugger"), Value::nextOrJoined},
                                  {QLatin1String("qwindowgeometry"), Value::next},
                                  {QLatin1String("qwindowicon"), Value::next},
                                  {QLatin1String("qwindowtitle"), Value::next},
                                  {QLatin1String("reverse"), Value::none},
                                  {QLatin1String("session"), Value::next},
                                  {QLatin1String("style"), Value::nextOrJoined},
                                  {QLatin1String("stylesheet"), Value::nextOrJoined},
                                  {QLatin1String("testability"), Value::none},
                                  {QLatin1String("title"), Value::next},
                                  {QLatin1String("visual"), Value::next},
                                  {QLatin1String("widgetcount"), Value::none}};

/// Qt takes whatever argument follows, also one with a dash.
const char* complaintAboutQt(const QtOption& known, const QNOption& option, bool isLast) {
    const bool isFlag = option.form == QNOption::Form::flag;
    if (known.value != Value::none && isFlag && isLast)
        return MARKED_TEXT("PlainTexts", "%1 needs a value; see --help.");
    if (known.value == Value::next && option.argument.startsWith(QLatin1String("--")) &&
        option.argument.contains(QLatin1Char('=')))
        return MARKED_TEXT("PlainTexts", "%1 takes the next argument as its value; see --help.");
    return nullptr;
}

/// Null when it is all right.
const char* complaintAbout(const QNOption& option, bool isLast) {
    const auto* const known = std::ranges::find(qtOptions, option.key, &QtOption::name);
    if (known != std::end(qtOptions))
        return complaintAboutQt(*known, option, isLast);
    const bool takesValue =
        option.key == CommandLine::screenshot || option.key == CommandLine::action;
    if (takesValue && option.value.isEmpty())
        return MARKED_TEXT("PlainTexts", "%1 needs a value; see --help.");
    const bool isForeign = !CommandLine::options().contains(option.key);
    return isForeign && option.argument.startsWith(QLatin1String("--"))
               ? MARKED_TEXT("PlainTexts", "There is no option %1; see --help.")
               : nullptr;
}

int print(const std::string& answer) {
    std::fputs(answer.c_str(), stdout);
    return std::fflush(stdout) == 0 ? 0 : 1;
}

/// "name=value" without a dash is legal and means nothing.
bool isOption(const QNOption& option, const QString& key) {
    return option.key == key && option.argument.startsWith(QLatin1Char('-'));
}

bool asksForHelp(const QNOption& option) {
    return isOption(option, CommandLine::help) || option.argument == QLatin1String("-h");
}

/// Whether Qt takes the next option for the value of this one.
bool takesNext(const QNOption& option) {
    const auto* const known = std::ranges::find(qtOptions, option.key, &QtOption::name);
    return known != std::end(qtOptions) && known->value != Value::none &&
           option.form == QNOption::Form::flag;
}

} // namespace

QStringList CommandLine::options() {
    return {action, debug, help, installVolume, screenshot, version};
}

std::optional<int> CommandLine::answer(const QStringList& arguments) {
    const QList<QNOption> options = readQNOptions(arguments);
    if (std::ranges::any_of(options, &asksForHelp))
        return print(helpText());
    if (std::ranges::any_of(options, [](const auto& each) { return isOption(each, version); }))
        return print("Tonvale " + platform::Bundle::main().version() + '\n');
    for (qsizetype i = 0; i < options.size(); ++i) {
        const QNOption& option = options[i];
        const bool isLast = &option == &options.last() && option.argument == arguments.last();
        if (const char* const complaint = complaintAbout(option, isLast)) {
            const QString name = option.argument.section(QLatin1Char('='), 0, 0);
            const std::string line =
                PlainTexts::filled(PlainTexts::tr(complaint), {name.toStdString()});
            std::fprintf(stderr, "Tonvale: %s\n", line.c_str());
            return wrongUsage;
        }
        i += takesNext(option) ? 1 : 0;
    }
    return std::nullopt;
}
