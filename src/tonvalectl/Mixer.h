#pragma once

#include "settings/ProgramSetting.h"
#include "tonvalectl/BusClient.h"

#include <cstdint>
#include <string>
#include <vector>

/// One program as reported by the application.
struct CtlProgram {
    std::string path; ///< of its object; empty if it does not run
    int position = 0; ///< in the window
    std::string name;
    ProgramSetting setting;
    bool playing = false;
    int activity = 0; ///< 0 to 100
    std::uint32_t pid = 0;
    std::string icon;
    bool controllable = true;
    std::string reason;

    [[nodiscard]] bool isRunning() const noexcept { return !path.empty(); }

    /// Updates it from a dictionary a{sv} of its properties.
    void update(GVariant* properties);
};

/// What tonvalectl asks of the application. All of it throws Failure, the constructor without a
/// session bus.
class Mixer {
  public:
    static constexpr const char* programInterface = "com.quarnel.Tonvale.Program";
    static constexpr const char* mixerInterface = "com.quarnel.Tonvale.Mixer";

    /// The programs that have an item, in the window's order.
    std::vector<CtlProgram> programs();

    /// The remembered programs without an item, sorted by name.
    std::vector<CtlProgram> remembered(const std::vector<CtlProgram>& running);

    /// The program that a typed name refers to.
    CtlProgram find(const std::string& name);

    void setVolume(const CtlProgram& program, int percent);
    void setMuted(const CtlProgram& program, bool muted);

    /// Sets the volume to 100 percent; the mute stays.
    void reset(const CtlProgram& program);
    void forget(const CtlProgram& program);

    /// Ignores the program that a typed name refers to, or the name itself if it is unknown.
    void ignore(const std::string& name);
    void unignore(const std::string& name);
    std::vector<std::string> ignored();

    /// Percent; -1 for none.
    int defaultVolume();
    void setDefaultVolume(int percent);

    void showWindow();

    /// Parses the reply of GetManagedObjects.
    static std::vector<CtlProgram> programsIn(GVariant* answer);

  private:
    void setProperty(const std::string& path, const char* interface, const char* property,
                     GVariant* value);
    Variant property(const char* name);
    std::vector<std::string> names(const char* list);
    std::string nameToIgnore(const std::string& name);
    void setRemembered(const std::string& name, const ProgramSetting& setting);
    void callNamed(const char* method, const std::string& name);

    BusClient bus_;
};
