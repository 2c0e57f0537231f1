#include "platform/text/Format.h"

#include "platform/text/ByteCount.h"
#include "platform/text/WrappablePath.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QTextBoundaryFinder>

#include <cstdint>
#include <limits>

using platform::binaryByteCount;
using platform::formatted;

namespace {

QString qs(const char* text) {
    return QString::fromUtf8(text);
}

struct Case {
    QString made;
    const char* expected;
};

void expectAll(std::initializer_list<Case> cases) {
    for (const Case& one : cases)
        EXPECT_EQ(one.made.toStdString(), one.expected);
}

} // namespace

TEST(Formatted, FillsEveryDirectiveWithTheNumberThatIsGiven) {
    constexpr auto largest = std::numeric_limits<std::uint64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    expectAll({
        {formatted(qs("%@ %s %s"), qs("ä€"), "ß", std::string("std")), "ä€ ß std"},
        {formatted(qs("%s"), static_cast<const char*>(nullptr)), "(null)"},
        {formatted(qs("%d %i %u %ld %lu"), -1, 2, 3U, -4L, 5UL), "-1 2 3 -4 5"},
        {formatted(qs("%lld|%llu|%zd|%zu"), smallest, largest, -6, sizeof(char)),
         "-9223372036854775808|18446744073709551615|-6|1"},
        {formatted(qs("%d %u"), largest, -7), "18446744073709551615 -7"},
        {formatted(qs("%x %x %lx"), 255, -1, -1), "ff ffffffff ffffffffffffffff"},
        {formatted(qs("%f %.1f %.0f %f"), 0.5, 2.25, 99.6, 3), "0.500000 2.3 100 3.000000"},
        {formatted(qs("%c%c%c%c"), 'a', 0x1F600, 0xD800, -1), "a😀\uFFFD\uFFFD"},
        {formatted(qs("%@ %@ %d"), 1.5, 42, "text"), "1.5 42 text"},
        {formatted(qs("100%% of %d%%"), 5), "100% of 5%"},
        {formatted(qs("%02d:%02u|%04x|%-3ld.|%+02ld|%+02ld|%5@|%05d"), 7, 8U, 0x900, 7L, 1L, -5L,
                   qs("ab"), -42),
         "07:08|0900|7  .|+1|-5|   ab|-0042"},
    });
}

TEST(Formatted, TakesArgumentsByNumberAndNeverExpandsThem) {
    expectAll({
        {formatted(qs("%2$@ before %1$@"), "one", "two"), "two before one"},
        {formatted(qs("%2$d%@%@"), 1, 2), "212"},
        {formatted(qs("%@, %@"), "%@ %1$@ %%", "end"), "%@ %1$@ %%, end"},
    });
}

TEST(Formatted, LeavesWhatItCannotFillAsItStands) {
    expectAll({
        {formatted(qs("%@ %@ %d"), "only"), "only %@ %d"},
        {formatted(qs("%3$@ %0$@ %99$@ %4294967297$@"), 1, 2), "%3$@ %0$@ %99$@ %4294967297$@"},
        {formatted(qs("%q %n %p %5%d %.2d %hhd %999999999d"), 1),
         "%q %n %p %51 %.2d %hhd %999999999d"},
        {formatted(qs("50% of %d"), 1), "50% of 1"},
    });
    for (const char* const end : {"%", "%1", "%1$", "%-", "%0", "%07", "%.", "%.1", "%l", "%ll"})
        EXPECT_EQ(formatted(qs("end ") + qs(end), 1), qs("end ") + qs(end));
    EXPECT_EQ(formatted(qs("")), QString());
}

TEST(BinaryByteCount, RoundsToOneDecimalOfTheUnitThatSuits) {
    constexpr std::uint64_t kilo = 1024;
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    expectAll({
        {binaryByteCount(0), "0 bytes"},
        {binaryByteCount(1), "1 byte"},
        {binaryByteCount(1023), "1,023 bytes"},
        {binaryByteCount(kilo), "1 KB"},
        {binaryByteCount(1536), "1.5 KB"},
        {binaryByteCount(kilo + 10), "1 KB"},
        {binaryByteCount(kilo * kilo - 1), "1 MB"},
        {binaryByteCount(24'684'084 * kilo), "23.5 GB"},
        {binaryByteCount(16 * kilo * kilo * kilo), "16 GB"},
        {binaryByteCount(std::numeric_limits<std::uint64_t>::max()), "16 EB"},
    });
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(binaryByteCount(1536), qs("1,5 KB"));
    QLocale::setDefault(before);
}

TEST(WrappablePath, BreaksAfterSlashesOnly) {
    for (const char* const path :
         {"/home/me/.config/com.quarnel.Tonvale.plist.damaged-20261125-230102-2",
          "/home/my name/a (b)/x, y; z? w!", "/media/\u97f3\u697d/d\u00e9j\u00e0\u2013vu", "/",
          ""}) {
        QString text = platform::wrappablePath(qs(path));
        QTextBoundaryFinder breaks(QTextBoundaryFinder::Line, text);
        for (qsizetype at = breaks.toNextBoundary(); at >= 0 && at < text.size();
             at = breaks.toNextBoundary())
            EXPECT_EQ(text[at - 1], QLatin1Char('/')) << path << " at " << at;
        EXPECT_EQ(text.remove(QChar(0x2060)), qs(path));
    }
}
