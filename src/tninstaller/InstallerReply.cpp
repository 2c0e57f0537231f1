#include "tninstaller/InstallerReply.h"

#include <cstdint>
#include <memory>
#include <plist/plist.h>

std::string InstallerReply::propertyList() const {
    const std::unique_ptr<void, void (*)(void*)> reply(::plist_new_dict(), &::plist_free);
    ::plist_dict_set_item(reply.get(), "MVInstallerErrorKey",
                          ::plist_new_uint(static_cast<std::uint64_t>(code)));
    ::plist_dict_set_item(reply.get(), "MVInstallerIndexKey", ::plist_new_uint(index));
    char* text = nullptr;
    std::uint32_t size = 0;
    ::plist_to_xml(reply.get(), &text, &size);
    const std::unique_ptr<char, void (*)(char*)> owned(text, &::plist_to_xml_free);
    return text != nullptr ? std::string(text, size) : std::string();
}
