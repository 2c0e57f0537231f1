#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace platform {

/// A bundle: a relocatable directory tree with Contents/Info.plist and, beside it, Linux/ with the
/// programs, Resources/, Helpers/ and PlugIns/. Immutable; any thread.
class Bundle {
  public:
    /// The bundle that the running executable lies in, found once. When the executable lies in
    /// none (a test, say), its folder stands in for Contents and every information is missing.
    static const Bundle& main();

    /// The bundle whose Contents folder is `contents`. A missing or damaged Info.plist is a line
    /// in the system log, and every information of it is missing.
    explicit Bundle(std::filesystem::path contents);

    const std::filesystem::path& contents() const noexcept { return contents_; }
    std::filesystem::path resources() const { return contents_ / "Resources"; }
    std::filesystem::path plugIns() const { return contents_ / "PlugIns"; }

    /// The text values of these keys of Info.plist: CFBundleIdentifier, CFBundleName and
    /// CFBundleShortVersionString; empty when missing.
    const std::string& identifier() const noexcept { return identifier_; }
    const std::string& name() const noexcept { return name_; }
    const std::string& version() const noexcept { return version_; }

  private:
    std::filesystem::path contents_;
    std::string identifier_;
    std::string name_;
    std::string version_;
};

} // namespace platform
