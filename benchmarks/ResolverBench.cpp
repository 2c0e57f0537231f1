#include "Harness.h"
#include "naming/ApplicationResolver.h"
#include "naming/DesktopEntries.h"
#include "naming/ProgramFiles.h"
#include "platform/processes/ProcessInfo.h"
#include "support/ChildProcess.h"
#include "support/PrivateFolder.h"
#include "support/WaitUntil.h"
#include "workspace/RegularApplications.h"

#include <fstream>
#include <gio/gdesktopappinfo.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <unistd.h>

namespace {

constexpr int entryCount = 500;
constexpr const char* language = "de_DE";

/// As much as the entries of a desktop say, in as many languages.
void writeEntry(const std::filesystem::path& folder, int number) {
    const std::string name = "program-" + std::to_string(number);
    std::ofstream file(folder / ("org.example." + name + ".desktop"));
    file << "[Desktop Entry]\nVersion=1.0\nType=Application\n";
    for (const char* const key : {"Name", "GenericName", "Comment", "Keywords"}) {
        file << key << "=" << name << "\n";
        for (const char* const other :
             {"ar", "bg", "ca", "cs",    "da", "de", "el", "es", "et", "eu",
              "fi", "fr", "gl", "he",    "hu", "id", "it", "ja", "ko", "lt",
              "nb", "nl", "pl", "pt_BR", "ro", "ru", "sk", "sv", "tr", "zh_CN"})
            file << key << "[" << other << "]=" << name << " in another language\n";
    }
    file << "Exec=env LANG=C /usr/lib/" << name << "/" << name << " --new-window %U\nIcon=" << name
         << "\nCategories=AudioVideo;Audio;Player;\nStartupWMClass=" << name << "\n";
}

struct Entries {
    Entries() {
        for (int i = 0; i < entryCount; ++i)
            writeEntry(folder.path(), i);
        // What runs in the measurements has one as well.
        std::ofstream(folder.path() / "sleep.desktop")
            << "[Desktop Entry]\nType=Application\nName=Sleep\nExec=sleep\n";
    }

    DesktopEntries read() const { return {{folder.path()}, {language, {}}, files}; }

    const support::PrivateFolder folder;
    const ProgramFiles files;
};

/// A program with an entry that a shell has started, as in a terminal.
struct Stage {
    Stage() {
        if (!support::waitUntil([this] {
                const auto path = platform::executablePath(child.pid());
                return path && path->ends_with("/sleep");
            }))
            throw std::runtime_error("the program has not started");
        start = platform::processStartTime(child.pid()).value_or(0);
    }

    const Entries entries;
    const DesktopEntries read = entries.read();
    const ProcessView processes;
    const support::ChildProcess child{{"sleep", "3600"}};
    std::uint64_t start = 0;
};

std::weak_ptr<Stage> currentStage;

std::shared_ptr<void> makeStage() {
    auto stage = std::make_shared<Stage>();
    currentStage = stage;
    return stage;
}

void expectSleep(const ApplicationIdentity& identity) {
    if (identity.name != "Sleep")
        throw std::runtime_error("the program is not known by its entry");
}

double resolveFirst() {
    constexpr std::size_t times = 200;
    const auto stage = currentStage.lock();
    ApplicationResolver resolver(stage->read, stage->processes);
    return bench::nanosecondsEach(times,
                                  [&] {
                                      for (std::size_t i = 0; i < times; ++i) {
                                          resolver.forget(stage->child.pid());
                                          expectSleep(
                                              resolver.resolve(stage->child.pid(), stage->start));
                                      }
                                  }) /
           1000;
}

double resolveAgain() {
    constexpr std::size_t times = 100'000;
    const auto stage = currentStage.lock();
    const ClientProperties client{"Sleep", "", "sleep", "sleep"};
    ApplicationResolver resolver(stage->read, stage->processes);
    expectSleep(resolver.resolve(stage->child.pid(), stage->start, client));
    return bench::nanosecondsEach(
               times,
               [&] {
                   for (std::size_t i = 0; i < times; ++i)
                       expectSleep(resolver.resolve(stage->child.pid(), stage->start, client));
               }) /
           1000;
}

std::weak_ptr<Entries> currentEntries;

std::shared_ptr<void> makeEntries() {
    auto entries = std::make_shared<Entries>();
    currentEntries = entries;
    return entries;
}

double readEntries() {
    const auto entries = currentEntries.lock();
    return bench::nanosecondsEach(
               1,
               [&] {
                   const DesktopEntries read = entries->read();
                   const DesktopEntry* const one = read.find("org.example.program-7");
                   if (one == nullptr || one->name != "program-7 in another language")
                       throw std::runtime_error("an entry is missing");
               }) /
           1e6;
}

/// GLib reads the same files and returns the name and the icon.
double readEntriesOfGlib() {
    const auto entries = currentEntries.lock();
    return bench::nanosecondsEach(
               1,
               [&] {
                   for (const auto& each :
                        std::filesystem::directory_iterator(entries->folder.path())) {
                       GDesktopAppInfo* const info =
                           g_desktop_app_info_new_from_filename(each.path().c_str());
                       if (info == nullptr)
                           throw std::runtime_error("GLib does not read an entry");
                       g_app_info_get_name(G_APP_INFO(info));
                       g_app_info_get_icon(G_APP_INFO(info));
                       g_object_unref(info);
                   }
               }) /
           1e6;
}

[[maybe_unused]] const bool addedFirst =
    bench::addFigure({.name = "resolver/first",
                      .metric = "finding the application of a process for the first time",
                      .unit = "us",
                      .ours = &resolveFirst,
                      .peerName = {},
                      .peer = {},
                      .surroundings = &makeStage});
[[maybe_unused]] const bool addedAgain = bench::addFigure({.name = "resolver/again",
                                                           .metric = "finding it again",
                                                           .unit = "us",
                                                           .ours = &resolveAgain,
                                                           .peerName = {},
                                                           .peer = {},
                                                           .surroundings = &makeStage});
[[maybe_unused]] const bool addedEntries =
    bench::addFigure({.name = "resolver/entries",
                      .metric = "reading 500 desktop entries and what programs are known by",
                      .unit = "ms",
                      .ours = &readEntries,
                      .peerName = "GDesktopAppInfo",
                      .peer = &readEntriesOfGlib,
                      .surroundings = &makeEntries});

} // namespace
