#include "platform/bundle/Bundle.h"

#include "platform/base/SystemLog.h"
#include "platform/plist/PropertyListNode.h"
#include "platform/plist/PropertyListValues.h"
#include "platform/processes/ProcessInfo.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <unistd.h>

namespace platform {

namespace {

PropertyListNode readInformation(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string content;
    for (std::array<char, 4096> part{}; stream.read(part.data(), part.size()), stream.gcount() > 0;)
        content.append(part.data(), static_cast<std::size_t>(stream.gcount()));
    return readPropertyList(content);
}

std::map<std::string, std::string, std::less<>> textsOf(void* dictionary) {
    std::map<std::string, std::string, std::less<>> texts;
    forEachEntry(dictionary, [&](const char* key, void* value) {
        if (auto text = textOf(value))
            texts.emplace(key, *std::move(text));
    });
    return texts;
}

std::filesystem::path contentsOfExecutable() {
    const auto executable = executablePath(::getpid());
    if (!executable)
        return {};
    std::filesystem::path folder = std::filesystem::path(*executable).parent_path();
    std::error_code ignored;
    if (folder.filename() == "Linux" &&
        std::filesystem::exists(folder.parent_path() / "Info.plist", ignored))
        return folder.parent_path();
    return folder;
}

} // namespace

const Bundle& Bundle::main() {
    static const Bundle bundle(contentsOfExecutable());
    return bundle;
}

Bundle::Bundle(std::filesystem::path contents) : contents_(std::move(contents)) {
    const std::filesystem::path file = contents_ / "Info.plist";
    const PropertyListNode root = readInformation(file);
    if (!root || !isDictionary(root.get())) {
        systemLog(LogPriority::error, "Couldn't read the bundle's information from %s",
                  file.c_str());
        return;
    }
    texts_ = textsOf(root.get());
}

std::filesystem::path Bundle::resource(std::string_view name,
                                       std::initializer_list<std::string_view> endings) const {
    std::filesystem::path file = resources() / name;
    for (const std::string_view ending : endings) {
        std::error_code error;
        if (std::filesystem::exists(file.replace_extension(ending), error))
            return file;
    }
    return {};
}

const std::string& Bundle::text(std::string_view key) const noexcept {
    static const std::string none;
    const auto found = texts_.find(key);
    return found == texts_.end() ? none : found->second;
}

} // namespace platform
