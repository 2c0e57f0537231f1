#include "platform/crash/LoadedModules.h"

#include "platform/crash/BuildId.h"
#include "platform/crash/CrashWriter.h"

#include <bit>
#include <cstddef>
#include <link.h>
#include <span>

namespace platform {

namespace {

std::string buildIdOf(const dl_phdr_info& module) {
    for (const ElfW(Phdr) & header : std::span(module.dlpi_phdr, module.dlpi_phnum)) {
        if (header.p_type != PT_NOTE)
            continue;
        const auto* const notes = std::bit_cast<const char*>(module.dlpi_addr + header.p_vaddr);
        if (std::string id = buildIdInNotes({notes, header.p_memsz}); !id.empty())
            return id;
    }
    return "-";
}

int writeModule(dl_phdr_info* module, std::size_t /*size*/, void* out) {
    static_cast<CrashWriter*>(out)
        ->text("module ")
        .hex(module->dlpi_addr)
        .text(" ")
        .text(buildIdOf(*module))
        .endLine();
    return 0;
}

} // namespace

void writeLoadedModules(CrashWriter& out) {
    ::dl_iterate_phdr(&writeModule, &out);
}

} // namespace platform
