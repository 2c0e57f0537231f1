#include "framework/crash/CrashReportText.h"

#include "framework/crash/CrashDetails.h"
#include "framework/crash/CrashSymbols.h"
#include "framework/crash/ElfFile.h"
#include "framework/crash/SignalNames.h"
#include "framework/redaction/Redactor.h"

#include "platform/base/HarmlessText.h"
#include "platform/processes/MachineFacts.h"
#include "platform/processes/ToolRun.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <map>

namespace {

constexpr std::string_view deletedMark = " (deleted)";

std::string inHex(std::uint64_t number) {
    std::array<char, 24> text{};
    std::snprintf(text.data(), text.size(), "0x%llx", static_cast<unsigned long long>(number));
    return text.data();
}

std::string fileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

/// "Compiled with libpipewire 0.3.65" and the like: the last word of the last line that has a digit
/// in it.
std::string versionOf(const std::string& program) {
    const auto result = platform::runTool({.arguments = {program, "--version"}});
    std::string version;
    std::string word;
    for (const char character : result ? result->output + "\n" : std::string()) {
        if (character != ' ' && character != '\n') {
            word += character;
        } else {
            if (!word.empty() && word.front() >= '0' && word.front() <= '9')
                version = word;
            word.clear();
        }
    }
    return version;
}

/// By the name of the library's file.
std::string qtVersion(const CrashDetails& details) {
    constexpr std::string_view library = "libQt6Core.so.";
    for (const CrashMapping& each : details.mappings) {
        if (const std::size_t at = each.path.find(library); at != std::string::npos)
            return each.path.substr(at + library.size());
    }
    return {};
}

/// Writes one report.
class Report {
  public:
    Report(const CrashDetails& details, const Redactor& redactor)
        : details_(details), redactor_(redactor) {}

    std::string text(const CrashSurroundings& surroundings) {
        text_ = "Tonvale crash report\n\n";
        addProgram();
        addMachine(surroundings);
        addCause();
        addFrames();
        addRegisters();
        addModules();
        return std::move(text_);
    }

  private:
    /// A file of what was loaded, if it is still the one.
    struct Module {
        ElfFile file;
        std::string buildId;
        bool isSame;
    };

    void add(std::string_view name, const std::string& value) {
        constexpr std::size_t column = 14;
        if (value.empty())
            return;
        text_.append(name).append(":");
        text_.append(name.size() + 1 < column ? column - name.size() - 1 : 1, ' ');
        text_.append(value).append("\n");
    }

    std::string clean(const std::string& text) const {
        return redactor_.redacted(platform::printableText(text));
    }

    void addProgram() {
        std::string program = details_.program;
        if (!details_.version.empty())
            program.append(" ").append(details_.version);
        if (!details_.build.empty())
            program.append(" (build ").append(details_.build).append(")");
        add("Program", clean(program));
        if (details_.pid != 0)
            add("Process", std::to_string(details_.pid) + ", ran for " +
                               std::to_string(details_.time - details_.started) + " s");
        add("Time", crashTimeText(details_.time));
    }

    void addMachine(const CrashSurroundings& surroundings) {
        std::string system = surroundings.distribution;
        system.append(system.empty() ? "" : ", ").append(details_.kernel);
        if (!details_.machine.empty())
            system.append(" ").append(details_.machine);
        if (details_.uptime != 0)
            system.append(", up for ").append(std::to_string(details_.uptime)).append(" s");
        add("System", clean(system));
        add("Desktop", clean(details_.desktop));
        add("Session", clean(details_.session));
        add("Qt", qtVersion(details_));
        add("PipeWire", clean(surroundings.pipewire));
        add("WirePlumber", clean(surroundings.wireplumber));
    }

    void addCause() {
        text_ += "\n";
        std::string signal = details_.signal == 0 ? "unknown" : signalName(details_.signal);
        if (details_.pid != 0 && details_.signal != 0)
            signal.append(", ").append(signalCause(details_.signal, details_.code));
        add("Signal", signal);
        if (details_.faultAddress)
            add("Address", inHex(*details_.faultAddress));
        add("Thread", clean(details_.thread));
        add("Exception", clean(demangledTypeName(details_.exceptionType)));
        add("Message", clean(details_.exceptionText));
        add("Last line", clean(details_.lastLine));
        if (!details_.isWhole)
            text_ += "The program could not write all of it down.\n";
    }

    static std::string demangledTypeName(const std::string& type) {
        return type.empty() ? type : demangledName(type);
    }

    const Module& moduleOf(const CrashMapping& mapping, std::uint64_t address) {
        const auto found = modules_.find(mapping.path);
        if (found != modules_.end())
            return found->second;
        ElfFile file(mapping.path);
        const std::string recorded = details_.buildIdOf(address);
        const bool isSame =
            recorded.empty() ? !mapping.path.ends_with(deletedMark) : recorded == file.buildId();
        const std::string buildId = recorded.empty() && isSame ? file.buildId() : recorded;
        return modules_.emplace(mapping.path, Module{std::move(file), buildId, isSame})
            .first->second;
    }

    void addFrames() {
        text_ += "\nFrames:\n";
        for (std::size_t i = 0; i < details_.frames.size(); ++i)
            addFrame(i);
        if (details_.hasMoreFrames)
            text_ += "… and more\n";
        if (details_.frames.empty())
            text_ += "unknown\n";
    }

    /// All but the first are where a call returns to, which may be the next function already.
    void addFrame(std::size_t index) {
        const std::uint64_t address = details_.frames[index];
        const std::uint64_t place = index == 0 ? address : address - 1;
        text_.append(std::to_string(index)).append(" ");
        const CrashMapping* const mapping = details_.mappingOf(place);
        if (mapping == nullptr || mapping->path.empty()) {
            text_.append(inHex(address)).append("\n");
            return;
        }
        const Module& module = moduleOf(*mapping, place);
        const std::uint64_t offset = place - mapping->begin + mapping->offset;
        const std::uint64_t known = module.isSame ? module.file.addressAt(offset) : 0;
        const std::uint64_t shown = (known != 0 ? known : offset) + (address - place);
        text_.append(clean(fileName(mapping->path))).append(" + ").append(inHex(shown));
        if (known != 0)
            addPlaces(sourcePlacesAt(mapping->path, known));
        text_ += "\n";
    }

    void addPlaces(const std::vector<SourcePlace>& places) {
        for (std::size_t i = 0; i < places.size(); ++i) {
            const SourcePlace& each = places[i];
            text_.append(i == 0 ? " " : ", in ");
            text_.append(each.function.empty() ? "?" : each.function);
            if (!each.file.empty())
                text_.append(" (").append(each.file).append(":").append(std::to_string(each.line) +
                                                                        ")");
        }
    }

    void addRegisters() {
        if (details_.registers.empty())
            return;
        text_ += "\nRegisters:\n";
        for (const auto& [name, value] : details_.registers)
            text_.append(name).append(" ").append(inHex(value)).append("\n");
    }

    void addModules() {
        text_ += "\nMemory:\n";
        for (const CrashMapping& each : details_.mappings) {
            text_.append(inHex(each.begin)).append(" to ").append(inHex(each.end)).append(" ");
            text_.append(each.permissions).append(" ").append(clean(each.path));
            if (each.path.starts_with('/')) {
                const std::string id = moduleOf(each, each.begin).buildId;
                text_.append(id.empty() ? "" : " build id ").append(id);
            }
            text_ += "\n";
        }
    }

    const CrashDetails& details_;
    const Redactor& redactor_;
    std::string text_;
    std::map<std::string, Module> modules_; // by their paths
};

} // namespace

CrashSurroundings CrashSurroundings::ofThisMachine() {
    return {.distribution = platform::distributionName(),
            .pipewire = versionOf("/usr/bin/pipewire"),
            .wireplumber = versionOf("/usr/bin/wireplumber")};
}

std::string crashReportText(const CrashDetails& details, const CrashSurroundings& surroundings,
                            const Redactor& redactor) {
    return Report(details, redactor).text(surroundings);
}

std::string crashReportText(std::string_view unknownRecord, const Redactor& redactor) {
    std::string text(unknownRecord);
    platform::makeHarmless(text, platform::ControlsKept::lineFeedAndTab);
    return std::string("Tonvale crash report\n\n"
                       "This was written by another version of the program, and is shown as it "
                       "is.\n\n")
        .append(redactor.redacted(text));
}

std::string crashTimeText(std::int64_t time) {
    const std::time_t seconds = time;
    std::tm parts{};
    ::gmtime_r(&seconds, &parts);
    std::array<char, 40> text{};
    std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S +0000", &parts);
    return text.data();
}
