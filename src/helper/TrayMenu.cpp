#include "helper/TrayMenu.h"

#include "platform/language/PlainTexts.h"

#include <algorithm>
#include <array>

namespace {

using Kind = MenuCommand::Kind;

/// The ids of what is always there; a program's entries follow its own id.
enum Id : int {
    outputId = 1,
    outputMuteId,
    firstLineId,
    hintId,
    muteAllId,
    secondLineId,
    openId,
    quitId,
    preferencesId,
    firstProgramId = 100,
    idsOfProgram = 16,
};

constexpr std::array<int, 5> steps{100, 75, 50, 25, 10};

QString text(const std::string& text) {
    return QString::fromStdString(text);
}

/// A single underscore would mark the next letter as a key.
QString label(QString text) {
    return text.replace(QLatin1Char('_'), QLatin1String("__"));
}

MenuEntry entry(int id, const QString& text, Kind kind = Kind::none) {
    MenuEntry entry{.id = id, .properties = {{QStringLiteral("label"), label(text)}}};
    entry.command.kind = kind;
    if (kind == Kind::none)
        entry.properties.insert(QStringLiteral("enabled"), false);
    return entry;
}

MenuEntry separator(int id) {
    return {.id = id, .properties = {{QStringLiteral("type"), QStringLiteral("separator")}}};
}

void mark(MenuEntry& entry, const char* type, bool isOn) {
    entry.properties.insert(QStringLiteral("toggle-type"), QString::fromLatin1(type));
    entry.properties.insert(QStringLiteral("toggle-state"), isOn ? 1 : 0);
}

void enable(MenuEntry& entry, bool isEnabled) {
    entry.properties.insert(QStringLiteral("enabled"), isEnabled);
}

QString titleOf(const PlayingProgram& program) {
    const std::string pattern =
        program.muted ? PlainTexts::tr("%1 (muted)") : PlainTexts::tr("%1 (%2 %)");
    return text(
        PlainTexts::filled(pattern, {program.name.toStdString(), std::to_string(program.percent)}));
}

MenuEntry entryOf(const PlayingProgram& program, int id) {
    MenuEntry whole{
        .id = id,
        .properties = {{QStringLiteral("label"), label(titleOf(program))},
                       {QStringLiteral("children-display"), QStringLiteral("submenu")}}};
    if (!program.icon.isEmpty())
        whole.properties.insert(QStringLiteral("icon-name"), program.icon);
    MenuEntry mute = entry(++id, text(PlainTexts::tr("Mute")), Kind::toggleProgramMute);
    mute.command.program = program.path;
    mark(mute, "checkmark", program.muted);
    enable(mute, program.isControllable || program.muted);
    whole.children.push_back(std::move(mute));
    whole.children.push_back(separator(++id));
    for (const int percent : steps) {
        MenuEntry step =
            entry(++id, text(PlainTexts::filled(PlainTexts::tr("%1 %"), {std::to_string(percent)})),
                  Kind::setProgramVolume);
        step.command.program = program.path;
        step.command.percent = percent;
        mark(step, "radio", program.percent == percent);
        enable(step, program.isControllable);
        whole.children.push_back(std::move(step));
    }
    if (!program.isControllable)
        whole.children.push_back(
            entry(++id, text(PlainTexts::filled("%1", {program.reason.toStdString()}))));
    return whole;
}

} // namespace

QString TrayMenu::describe(const std::optional<OutputVolume::State>& output) {
    if (!output)
        return {};
    const std::string pattern =
        output->muted ? PlainTexts::tr("Volume %1 %, muted") : PlainTexts::tr("Volume %1 %");
    return text(PlainTexts::filled(pattern, {std::to_string(output->percent)}));
}

MenuEntry TrayMenu::compose(const std::optional<OutputVolume::State>& output,
                            const std::optional<std::vector<PlayingProgram>>& programs) {
    MenuEntry menu{.properties = {{QStringLiteral("children-display"), QStringLiteral("submenu")}}};
    const QString state = describe(output);
    menu.children.push_back(
        entry(outputId, state.isEmpty() ? text(PlainTexts::tr("No sound output")) : state));
    MenuEntry mute =
        entry(outputMuteId, text(PlainTexts::tr("Mute the output")), Kind::toggleOutputMute);
    mark(mute, "checkmark", output && output->muted);
    enable(mute, output.has_value());
    menu.children.push_back(std::move(mute));
    menu.children.push_back(separator(firstLineId));
    if (!programs)
        menu.children.push_back(entry(hintId, text(PlainTexts::tr("Tonvale is not running"))));
    else if (programs->empty())
        menu.children.push_back(entry(hintId, text(PlainTexts::tr("No program plays"))));
    else
        addPrograms(menu, *programs);
    menu.children.push_back(separator(secondLineId));
    menu.children.push_back(entry(openId, text(PlainTexts::tr("Open Tonvale")), Kind::openWindow));
    menu.children.push_back(
        entry(preferencesId, text(PlainTexts::tr("Preferences…")), Kind::preferences));
    menu.children.push_back(entry(quitId, text(PlainTexts::tr("Quit Tonvale")), Kind::quit));
    return menu;
}

void TrayMenu::addPrograms(MenuEntry& menu, const std::vector<PlayingProgram>& programs) {
    for (const PlayingProgram& program : programs)
        menu.children.push_back(entryOf(program, idOf(program.path)));
    MenuEntry all =
        entry(muteAllId, text(PlainTexts::tr("Mute everything that plays")), Kind::muteAll);
    enable(all, std::ranges::any_of(programs, [](const PlayingProgram& program) {
               return program.isControllable && !program.muted;
           }));
    menu.children.push_back(std::move(all));
}

int TrayMenu::idOf(const QString& program) {
    const auto [found, isNew] = ids_.try_emplace(program, firstProgramId + nextId_ * idsOfProgram);
    nextId_ += isNew ? 1 : 0;
    return found->second;
}
