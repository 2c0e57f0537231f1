#include "tonvalectl/Mixer.h"

#include "platform/language/PlainTexts.h"
#include "tonvalectl/Failure.h"
#include "tonvalectl/NameMatch.h"

#include <algorithm>

namespace {

constexpr const char* propertiesInterface = "org.freedesktop.DBus.Properties";

template <typename Value>
void lookUp(GVariant* properties, const char* key, const char* format, Value& value) {
    g_variant_lookup(properties, key, format, &value);
}

void lookUp(GVariant* properties, const char* key, std::string& value) {
    const char* text = nullptr;
    if (g_variant_lookup(properties, key, "&s", &text) != FALSE)
        value = text;
}

void lookUp(GVariant* properties, const char* key, bool& value) {
    gboolean truth = FALSE;
    if (g_variant_lookup(properties, key, "b", &truth) != FALSE)
        value = truth != FALSE;
}

template <typename Named>
std::vector<std::string> namesOf(const std::vector<Named>& programs) {
    std::vector<std::string> names;
    names.reserve(programs.size());
    for (const Named& program : programs)
        names.push_back(program.name);
    return names;
}

/// In the order of the user's language.
void sortByName(std::vector<CtlProgram>& programs) {
    std::ranges::sort(programs, [](const CtlProgram& one, const CtlProgram& other) {
        return g_utf8_collate(one.name.c_str(), other.name.c_str()) < 0;
    });
}

} // namespace

void CtlProgram::update(GVariant* properties) {
    lookUp(properties, "Name", name);
    lookUp(properties, "Position", "i", position);
    lookUp(properties, "Volume", "i", setting.percent);
    lookUp(properties, "Muted", setting.muted);
    lookUp(properties, "Playing", playing);
    lookUp(properties, "Activity", "i", activity);
    lookUp(properties, "ProcessId", "u", pid);
    lookUp(properties, "IconName", icon);
    lookUp(properties, "Controllable", controllable);
    lookUp(properties, "Reason", reason);
}

std::vector<CtlProgram> Mixer::programsIn(GVariant* answer) {
    std::vector<CtlProgram> programs;
    const Variant objects(g_variant_get_child_value(answer, 0));
    GVariantIter object;
    g_variant_iter_init(&object, objects.get());
    const char* path = nullptr;
    GVariant* interfaces = nullptr;
    while (g_variant_iter_next(&object, "{&o@a{sa{sv}}}", &path, &interfaces) != FALSE) {
        const Variant owned(interfaces);
        const Variant found(
            g_variant_lookup_value(interfaces, programInterface, G_VARIANT_TYPE_VARDICT));
        if (found == nullptr)
            continue;
        programs.emplace_back().path = path;
        programs.back().update(found.get());
    }
    std::ranges::stable_sort(programs, {}, &CtlProgram::position);
    return programs;
}

std::vector<CtlProgram> Mixer::programs() {
    const Variant answer =
        bus_.call(BusClient::root, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
    return programsIn(answer.get());
}

std::vector<CtlProgram> Mixer::remembered(const std::vector<CtlProgram>& running) {
    const Variant answer = bus_.call(BusClient::root, mixerInterface, "GetRemembered");
    std::vector<CtlProgram> programs;
    const Variant list(g_variant_get_child_value(answer.get(), 0));
    GVariantIter entry;
    g_variant_iter_init(&entry, list.get());
    const char* name = nullptr;
    int percent = 0;
    gboolean muted = FALSE;
    while (g_variant_iter_next(&entry, "(&sib)", &name, &percent, &muted) != FALSE) {
        if (std::ranges::find(running, name, &CtlProgram::name) != running.end())
            continue;
        CtlProgram& program = programs.emplace_back();
        program.name = name;
        program.setting = {percent, muted != FALSE};
    }
    sortByName(programs);
    return programs;
}

/// An exact name needs no comparison with programs that do not run.
CtlProgram Mixer::find(const std::string& name) {
    std::vector<CtlProgram> all = programs();
    const auto exact = std::ranges::find(all, name, &CtlProgram::name);
    if (exact != all.end())
        return *exact;
    const auto others = remembered(all);
    all.insert(all.end(), others.begin(), others.end());
    return *std::ranges::find(all, nameMeant(name, namesOf(all)), &CtlProgram::name);
}

void Mixer::setVolume(const CtlProgram& program, int percent) {
    if (program.isRunning())
        setProperty(program.path, programInterface, "Volume", g_variant_new_int32(percent));
    else
        setRemembered(program.name, {percent, program.setting.muted});
}

void Mixer::setMuted(const CtlProgram& program, bool muted) {
    if (program.isRunning())
        setProperty(program.path, programInterface, "Muted",
                    g_variant_new_boolean(muted ? TRUE : FALSE));
    else
        setRemembered(program.name, {program.setting.percent, muted});
}

void Mixer::reset(const CtlProgram& program) {
    if (program.isRunning())
        bus_.call(program.path, programInterface, "Reset");
    else
        setRemembered(program.name, {ProgramSetting::fullVolume, program.setting.muted});
}

void Mixer::forget(const CtlProgram& program) {
    callNamed("Forget", program.name);
}

void Mixer::ignore(const std::string& name) {
    callNamed("Ignore", nameToIgnore(name));
}

/// The name of what is ignored already means that, and no program that begins with it.
std::string Mixer::nameToIgnore(const std::string& name) {
    if (const auto same = namesAlike(name, ignored()); !same.empty())
        return same.front();
    const auto running = programs();
    std::vector<std::string> known = namesOf(running);
    for (const auto& more : {namesOf(remembered(running)), names("NoLongerIgnored")})
        known.insert(known.end(), more.begin(), more.end());
    const bool isName = !name.empty() && g_utf8_validate(name.c_str(), -1, nullptr) != FALSE;
    return isName && namesMeant(name, known).empty() ? name : nameMeant(name, known);
}

void Mixer::unignore(const std::string& name) {
    const auto known = ignored();
    if (namesMeant(name, known).empty())
        throw Failure(ExitCode::noSuchProgram,
                      PlainTexts::filled(PlainTexts::tr("“%1” is not ignored."), {name}));
    callNamed("Unignore", nameMeant(name, known));
}

std::vector<std::string> Mixer::ignored() {
    return names("Ignored");
}

int Mixer::defaultVolume() {
    return g_variant_get_int32(property("DefaultVolume").get());
}

void Mixer::setDefaultVolume(int percent) {
    setProperty(BusClient::root, mixerInterface, "DefaultVolume", g_variant_new_int32(percent));
}

void Mixer::showWindow() {
    bus_.call(BusClient::root, mixerInterface, "ShowWindow");
}

void Mixer::setProperty(const std::string& path, const char* interface, const char* property,
                        GVariant* value) {
    bus_.call(path, propertiesInterface, "Set", g_variant_new("(ssv)", interface, property, value));
}

Variant Mixer::property(const char* name) {
    const Variant answer = bus_.call(BusClient::root, propertiesInterface, "Get",
                                     g_variant_new("(ss)", mixerInterface, name));
    GVariant* value = nullptr;
    g_variant_get(answer.get(), "(v)", &value);
    return Variant(value);
}

std::vector<std::string> Mixer::names(const char* list) {
    const Variant value = property(list);
    std::vector<std::string> names;
    GVariantIter entry;
    g_variant_iter_init(&entry, value.get());
    const char* name = nullptr;
    while (g_variant_iter_next(&entry, "&s", &name) != FALSE)
        names.emplace_back(name);
    return names;
}

void Mixer::setRemembered(const std::string& name, const ProgramSetting& setting) {
    bus_.call(BusClient::root, mixerInterface, "SetRemembered",
              g_variant_new("(sib)", name.c_str(), setting.percent, setting.muted ? TRUE : FALSE));
}

void Mixer::callNamed(const char* method, const std::string& name) {
    bus_.call(BusClient::root, mixerInterface, method, g_variant_new("(s)", name.c_str()));
}
