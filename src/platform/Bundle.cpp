#include "platform/Bundle.h"

#include "platform/ProcessInfo.h"
#include "platform/SystemLog.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <plist/plist.h>
#include <unistd.h>

namespace platform {

namespace {

struct PlistDeleter {
    using pointer = plist_t;
    void operator()(plist_t node) const noexcept { plist_free(node); }
};
using Plist = std::unique_ptr<plist_t, PlistDeleter>;

Plist readPropertyList(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(stream), {}};
    plist_t root = nullptr;
    if (!content.empty())
        plist_from_memory(content.data(), static_cast<std::uint32_t>(content.size()), &root);
    return Plist(root);
}

std::string textOf(plist_t dictionary, const char* key) {
    const plist_t node = plist_dict_get_item(dictionary, key);
    if (node == nullptr || plist_get_node_type(node) != PLIST_STRING)
        return {};
    std::uint64_t length = 0;
    const char* const text = plist_get_string_ptr(node, &length);
    return {text, length};
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
    const Plist root = readPropertyList(file);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT) {
        systemLog(LogPriority::error, "Couldn't read the bundle's information from %s",
                  file.c_str());
        return;
    }
    identifier_ = textOf(root.get(), "CFBundleIdentifier");
    name_ = textOf(root.get(), "CFBundleName");
    version_ = textOf(root.get(), "CFBundleShortVersionString");
}

} // namespace platform
