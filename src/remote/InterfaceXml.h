#pragma once

/// The interfaces for people and programs that introspect; from resources/dbus.
namespace InterfaceXml {

extern const char* const mixer;
extern const char* const program;

} // namespace InterfaceXml
