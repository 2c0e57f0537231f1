#include "framework/crash/CrashSymbols.h"

#include "platform/base/Mutex.h"

#include <backtrace.h>
#include <cstdlib>
#include <cxxabi.h>
#include <link.h>
#include <map>
#include <memory>

namespace {

platform::Mutex mutex; // the states are for one thread at a time
// What has been read is never freed by the library.
std::map<std::string, backtrace_state*> states GUARDED_BY(mutex);

void ignoreError(void* /*data*/, const char* /*text*/, int /*error*/) {}

/// The library takes the file for this process's own program, so it expects addresses from there.
std::uint64_t ownBase() {
    static const std::uint64_t base = [] {
        std::uint64_t found = 0;
        ::dl_iterate_phdr(
            [](dl_phdr_info* program, std::size_t /*size*/, void* result) {
                *static_cast<std::uint64_t*>(result) = program->dlpi_addr;
                return 1;
            },
            &found);
        return found;
    }();
    return base;
}

backtrace_state* stateOf(const std::string& file) REQUIRES(mutex) {
    const auto [place, isNew] = states.try_emplace(file, nullptr);
    if (isNew) // the name must stay where it is
        place->second = ::backtrace_create_state(place->first.c_str(), 0, &ignoreError, nullptr);
    return place->second;
}

std::string nameOfFile(const char* path) {
    const std::string text = path != nullptr ? path : "";
    return text.substr(text.rfind('/') + 1);
}

int addPlace(void* places, std::uintptr_t /*address*/, const char* file, int line,
             const char* function) {
    if (function != nullptr || file != nullptr)
        static_cast<std::vector<SourcePlace>*>(places)->push_back(
            {function != nullptr ? demangledName(function) : std::string(), nameOfFile(file),
             line});
    return 0;
}

void keepSymbol(void* symbol, std::uintptr_t /*address*/, const char* name,
                std::uintptr_t /*begin*/, std::uintptr_t /*size*/) {
    if (name != nullptr)
        *static_cast<std::string*>(symbol) = demangledName(name);
}

} // namespace

std::string demangledName(const std::string& name) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status), &std::free);
    return status == 0 ? text.get() : name;
}

std::vector<SourcePlace> sourcePlacesAt(const std::string& file, std::uint64_t address) {
    const platform::ScopedLock lock(mutex);
    std::vector<SourcePlace> places;
    backtrace_state* const state = stateOf(file);
    if (state == nullptr)
        return places;
    const std::uint64_t place = ownBase() + address;
    ::backtrace_pcinfo(state, place, &addPlace, &ignoreError, &places);
    std::string symbol; // with what the function belongs to, which debug information leaves out
    ::backtrace_syminfo(state, place, &keepSymbol, &ignoreError, &symbol);
    if (places.empty() && !symbol.empty())
        places.emplace_back();
    if (!symbol.empty())
        places.back().function = symbol;
    return places;
}
