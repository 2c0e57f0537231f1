#pragma once

#include <QDBusConnection>

#include <filesystem>
#include <string>

/// For the copy that has been started from an install disk mounted at `volume`: unmounts the disk
/// image if that is this user's to do, and moves its file to the Trash if it lies where a person
/// has put it: in the home, the folder of downloads or one of temporary files. Nothing is touched
/// unless an image is mounted there that holds `bundle`, by identifier and version. What fails is
/// logged. Returns at once; main thread only.
void disposeOfInstallVolume(const std::string& volume, const std::filesystem::path& bundle,
                            const QDBusConnection& systemBus);
