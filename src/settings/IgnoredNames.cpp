#include "settings/IgnoredNames.h"

#include "platform/base/Utf8.h"
#include "platform/plist/StorableText.h"

#include <algorithm>
#include <array>
#include <clocale>
#include <cwctype>

namespace {

constexpr std::array<std::string_view, 43> builtIn{"Activity Monitor",
                                                   "AppleSpell.service",
                                                   "backgroundinstruments",
                                                   "BluetoothUIServer",
                                                   "Console",
                                                   "com.apple.dock.extra",
                                                   "com.apple.security.pboxd",
                                                   "Disk Utility",
                                                   "Dock",
                                                   "Pelmora",
                                                   "Finder",
                                                   "Folder Actions Dispatcher",
                                                   "EEventManager",
                                                   "ibtool",
                                                   "ibtoold",
                                                   "iCal",
                                                   "iChatAgent",
                                                   "Image Capture Extension",
                                                   "Interface Builder",
                                                   "iTunes Helper",
                                                   "loginwindow",
                                                   "mdworker",
                                                   "mdworker32",
                                                   "Microsoft AU Daemon",
                                                   "Microsoft Ship Asserts",
                                                   "NetAuthAgent",
                                                   "PressAndHold",
                                                   "Preview",
                                                   "PTPCamera",
                                                   "rcd",
                                                   "Safari Web Content",
                                                   "scriptrunner",
                                                   "SecurityAgent",
                                                   "ShareKitHelper",
                                                   "Tonvale",
                                                   "TonvaleHelper",
                                                   "storeagent",
                                                   "SystemUIServer",
                                                   "talagent",
                                                   "Terminal",
                                                   "TextEdit",
                                                   "UserEventAgent",
                                                   "Xcode"};

locale_t anyLocale() noexcept {
    static const locale_t locale = [] {
        const locale_t unicode = ::newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return unicode != nullptr ? unicode : ::newlocale(LC_CTYPE_MASK, "C", nullptr);
    }();
    return locale;
}

/// The letter without its case. Upper case first: some letters have two lower ones.
char32_t folded(char32_t letter) noexcept {
    constexpr char32_t dottedCapital = 0x130;
    constexpr char32_t dotlessSmall = 0x131;
    if (letter == dottedCapital || letter == dotlessSmall) // are an i in some languages only
        return letter;
    const auto upper = ::towupper_l(static_cast<std::wint_t>(letter), anyLocale());
    return static_cast<char32_t>(::towlower_l(upper, anyLocale()));
}

char32_t takeFolded(std::string_view& name) noexcept {
    return folded(platform::takeUtf8(name).code.value_or(U'\uFFFD'));
}

bool isSameName(std::string_view one, std::string_view other) noexcept {
    while (!one.empty() && !other.empty()) {
        if (takeFolded(one) != takeFolded(other))
            return false;
    }
    return one.empty() && other.empty();
}

} // namespace

std::span<const std::string_view> builtInIgnoredNames() noexcept {
    return builtIn;
}

bool IgnoredNames::contains(std::string_view name) const {
    const std::string wanted = platform::storableText(name);
    const auto isNamed = [&wanted](std::string_view each) { return isSameName(each, wanted); };
    return std::ranges::any_of(custom, isNamed) ||
           std::ranges::any_of(builtIn, [&](std::string_view each) {
               return isNamed(each) &&
                      std::ranges::find(disabledBuiltIn, each) == disabledBuiltIn.end();
           });
}
