#include "helper/InstalledApplication.h"

#include "platform/base/Directories.h"
#include "platform/bundle/Bundle.h"
#include "platform/plist/PropertyListNode.h"
#include "platform/plist/PropertyListValues.h"
#include "settings/PreferenceKeys.h"

#include <fstream>
#include <iterator>
#include <system_error>
#include <unistd.h>

namespace {

constexpr const char* identifier = "com.quarnel.Tonvale";

std::string preference(const QString& key) {
    const std::string folder = platform::preferencesDirectory();
    if (folder.empty())
        return {};
    std::ifstream stream(folder + "/com.quarnel.Tonvale.plist", std::ios::binary);
    const std::string content(std::istreambuf_iterator<char>(stream), {});
    const auto list = platform::readPropertyList(content);
    void* const node = list ? platform::entryOf(list.get(), key.toStdString().c_str()) : nullptr;
    return node != nullptr ? platform::textOf(node).value_or("") : "";
}

} // namespace

std::optional<std::filesystem::path> InstalledApplication::program() {
    const std::filesystem::path bundle = preference(PreferenceKeys::lastLaunchPath);
    std::error_code error;
    if (!bundle.is_absolute() ||
        !std::filesystem::is_regular_file(bundle / "Contents/Info.plist", error))
        return std::nullopt;
    const platform::Bundle application(bundle / "Contents");
    const std::string& name = application.text("CFBundleExecutable");
    const auto program = application.contents() / "Linux" / name;
    const bool isOurs = application.identifier() == identifier && !name.empty() &&
                        name.find('/') == std::string::npos &&
                        std::filesystem::is_regular_file(program, error) &&
                        ::access(program.c_str(), X_OK) == 0;
    return isOurs ? std::optional(program) : std::nullopt;
}

std::string InstalledApplication::language() {
    return preference(PreferenceKeys::messageLanguage);
}
