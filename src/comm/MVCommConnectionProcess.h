#pragma once

#include <QString>

#include <cstdint>

/// The program at the other end of a plug-in connection, from its check-in.
struct MVCommConnectionProcess {
    std::uint32_t pid = 0; ///< 0 until the check-in
    QString name;          ///< null until the check-in, never empty after it
    QString path;          ///< full path of the executable; null until the check-in
};
