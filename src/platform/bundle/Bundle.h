#pragma once

#include <filesystem>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// A bundle: a relocatable directory tree with Contents/Info.plist and, beside it, Linux/ with the
/// programs, Resources/, Helpers/ and PlugIns/. Immutable; any thread.
class Bundle {
  public:
    /// The bundle of the running executable, determined once. If the executable is in no bundle
    /// (for example a test), its folder is used as Contents and Info.plist counts as missing.
    static const Bundle& main();

    /// The bundle whose Contents folder is `contents`. A missing or damaged Info.plist is a line in
    /// the system log, and all its values are empty.
    explicit Bundle(std::filesystem::path contents);

    [[nodiscard]] const std::filesystem::path& contents() const noexcept { return contents_; }
    [[nodiscard]] std::filesystem::path resources() const { return contents_ / "Resources"; }

    /// The path of the resource called `name`, with the best available ending. `endings` are the
    /// possible ones, the best first, such as ".svg". Empty if there is none.
    [[nodiscard]] std::filesystem::path
    resource(std::string_view name, std::initializer_list<std::string_view> endings) const;

    [[nodiscard]] std::filesystem::path plugIns() const { return contents_ / "PlugIns"; }

    /// The value of a key of Info.plist; empty if it is missing or not a text.
    [[nodiscard]] const std::string& text(std::string_view key) const noexcept;

    [[nodiscard]] const std::string& identifier() const noexcept {
        return text("CFBundleIdentifier");
    }
    [[nodiscard]] const std::string& name() const noexcept { return text("CFBundleName"); }
    [[nodiscard]] const std::string& version() const noexcept {
        return text("CFBundleShortVersionString");
    }

  private:
    std::filesystem::path contents_;
    std::map<std::string, std::string, std::less<>> texts_;
};

} // namespace platform
