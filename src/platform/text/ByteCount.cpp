#include "platform/text/ByteCount.h"

#include "platform/base/MarkedText.h"
#include "platform/text/Format.h"
#include "platform/text/Texts.h"

#include <QLocale>

#include <array>
#include <cmath>

namespace platform {

QString binaryByteCount(std::uint64_t bytes) {
    if (bytes == 1)
        return Texts::tr("1 byte");
    constexpr std::array keys{MARKED_TEXT("Texts", "%@ bytes"), MARKED_TEXT("Texts", "%@ KB"),
                              MARKED_TEXT("Texts", "%@ MB"),    MARKED_TEXT("Texts", "%@ GB"),
                              MARKED_TEXT("Texts", "%@ TB"),    MARKED_TEXT("Texts", "%@ PB"),
                              MARKED_TEXT("Texts", "%@ EB")};
    constexpr double step = 1024;
    constexpr double decimals = 10; // one decimal
    double tenths = static_cast<double>(bytes) * decimals;
    std::size_t unit = 0;
    // The rounded number decides: 1023.99 KB are 1 MB.
    for (; std::round(tenths) >= step * decimals && unit + 1 < keys.size(); ++unit)
        tenths /= step;
    tenths = std::round(tenths);
    const bool whole = std::fmod(tenths, decimals) == 0;
    return formatted(Texts::tr(keys.at(unit)),
                     QLocale().toString(tenths / decimals, 'f', whole ? 0 : 1));
}

} // namespace platform
