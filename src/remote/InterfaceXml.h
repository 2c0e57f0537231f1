#pragma once

/// The introspection data of the interfaces; from resources/dbus.
namespace InterfaceXml {

extern const char* const mixer;
extern const char* const program;

} // namespace InterfaceXml
