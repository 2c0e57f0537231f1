#include "ui/preferences/BuiltInDescriptions.h"

#include "platform/base/MarkedText.h"
#include "platform/text/Texts.h"

#include <QHash>

namespace {

struct Description {
    const char* name;
    const char* text; // English
};

constexpr Description descriptions[] = {
    {"Activity Monitor", MARKED_TEXT("Texts", "task manager of macOS")},
    {"AppleSpell.service", MARKED_TEXT("Texts", "spelling checker of macOS")},
    {"backgroundinstruments", MARKED_TEXT("Texts", "measures programs for developers")},
    {"BluetoothUIServer", MARKED_TEXT("Texts", "Bluetooth dialogs of macOS")},
    {"com.apple.dock.extra", MARKED_TEXT("Texts", "part of the dock of macOS")},
    {"com.apple.security.pboxd", MARKED_TEXT("Texts", "file dialogs of macOS")},
    {"Console", MARKED_TEXT("Texts", "log viewer")},
    {"Disk Utility", MARKED_TEXT("Texts", "manages disks")},
    {"Dock", MARKED_TEXT("Texts", "dock of macOS")},
    {"EEventManager", MARKED_TEXT("Texts", "buttons of a scanner")},
    {"Finder", MARKED_TEXT("Texts", "file manager of macOS")},
    {"Folder Actions Dispatcher", MARKED_TEXT("Texts", "runs scripts when a folder changes")},
    {"ibtool", MARKED_TEXT("Texts", "tool for developers")},
    {"ibtoold", MARKED_TEXT("Texts", "tool for developers")},
    {"iCal", MARKED_TEXT("Texts", "calendar of macOS")},
    {"iChatAgent", MARKED_TEXT("Texts", "waits for chat messages")},
    {"Image Capture Extension", MARKED_TEXT("Texts", "fetches pictures from cameras")},
    {"Interface Builder", MARKED_TEXT("Texts", "tool for developers")},
    {"iTunes Helper", MARKED_TEXT("Texts", "waits for music players")},
    {"loginwindow", MARKED_TEXT("Texts", "login of macOS")},
    {"mdworker", MARKED_TEXT("Texts", "indexes files")},
    {"mdworker32", MARKED_TEXT("Texts", "indexes files")},
    {"Microsoft AU Daemon", MARKED_TEXT("Texts", "looks for updates")},
    {"Microsoft Ship Asserts", MARKED_TEXT("Texts", "reports errors")},
    {"NetAuthAgent", MARKED_TEXT("Texts", "asks for passwords of servers")},
    {"Pelmora", MARKED_TEXT("Texts", "another application of the same maker")},
    {"PressAndHold", MARKED_TEXT("Texts", "accents for keys that are held")},
    {"Preview", MARKED_TEXT("Texts", "shows pictures and documents")},
    {"PTPCamera", MARKED_TEXT("Texts", "fetches pictures from cameras")},
    {"rcd", MARKED_TEXT("Texts", "waits for a remote control")},
    {"Safari Web Content", MARKED_TEXT("Texts", "shows web pages for Safari")},
    {"scriptrunner", MARKED_TEXT("Texts", "runs scripts")},
    {"SecurityAgent", MARKED_TEXT("Texts", "asks for passwords")},
    {"ShareKitHelper", MARKED_TEXT("Texts", "shares documents with others")},
    {"storeagent", MARKED_TEXT("Texts", "loads applications from a store")},
    {"SystemUIServer", MARKED_TEXT("Texts", "menu bar of macOS")},
    {"talagent", MARKED_TEXT("Texts", "restores windows")},
    {"Terminal", MARKED_TEXT("Texts", "terminal of macOS")},
    {"TextEdit", MARKED_TEXT("Texts", "text editor of macOS")},
    {"Tonvale", MARKED_TEXT("Texts", "this application")},
    {"TonvaleHelper", MARKED_TEXT("Texts", "its icon in the menu bar")},
    {"UserEventAgent", MARKED_TEXT("Texts", "starts programs on events")},
    {"Xcode", MARKED_TEXT("Texts", "tool for developers")},
};

} // namespace

QString builtInDescription(const QString& name) {
    static const auto byName = [] {
        QHash<QString, const char*> all;
        for (const Description& each : descriptions)
            all.insert(QString::fromUtf8(each.name), each.text);
        return all;
    }();
    const char* const text = byName.value(name);
    return text != nullptr ? Texts::tr(text) : QString();
}
