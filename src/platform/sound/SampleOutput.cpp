#include "platform/sound/SampleOutput.h"

#include "platform/base/SystemLog.h"
#include "platform/bundle/Bundle.h"

#include <dlfcn.h>

namespace platform {

/// The module stays loaded: threads of the libraries behind it may outlive the output.
std::unique_ptr<SampleOutput> SampleOutput::load(const std::filesystem::path& recording) {
    using Maker = SampleOutput* (*)(const char*, const Report*);
    const std::string module = Bundle::main().plugIns() / "SampleOutput.so";
    void* const handle = ::dlopen(module.c_str(), RTLD_NOW | RTLD_LOCAL);
    void* const symbol = handle != nullptr ? ::dlsym(handle, "makeSampleOutput") : nullptr;
    if (symbol == nullptr) {
        const char* const reason = ::dlerror();
        systemLog(LogPriority::error, "Couldn't load the sound output: %s",
                  reason != nullptr ? reason : "no reason given");
        return nullptr;
    }
    const Report report = [](const std::string& line) {
        systemLog(LogPriority::error, "%s", line.c_str());
    };
    const auto make = reinterpret_cast<Maker>(symbol);
    return std::unique_ptr<SampleOutput>(make(recording.c_str(), &report));
}

} // namespace platform
