#include "platform/defaults/PropertyList.h"

#include "platform/plist/PropertyListNode.h"

#include <QDateTime>
#include <QStringList>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <plist/plist.h>
#include <string>

using platform::isSameValue;
using platform::parsePropertyList;
using platform::propertyListXml;
using platform::storableValue;

namespace {

QDateTime date(int year, int month, int day) {
    return {QDate(year, month, day), QTime(23, 59, 58), Qt::UTC};
}

/// Every type, with the values that are easily lost.
QVariantMap everything() {
    return {
        {"true", true},
        {"false", false},
        {"zero", 0LL},
        {"least", std::numeric_limits<qlonglong>::min()},
        {"greatest", std::numeric_limits<qlonglong>::max()},
        {"unsigned", std::numeric_limits<qulonglong>::max()},
        {"volume", 0.75},
        {"third", 1.0 / 3},
        {"tiny", 4.9e-324},
        {"huge", -1.7976931348623157e308},
        {"infinite", -std::numeric_limits<double>::infinity()},
        {"not a number", std::numeric_limits<double>::quiet_NaN()},
        {"empty", QString()},
        {"text", QString::fromUtf8(" <a href=\"x\">&amp;</a>\r\n\t]]> Ä 𝄞 ")},
        {"", "of the empty key"},
        {" <key> & Ä ", "of a key with everything"},
        {"bytes", QByteArray("\0\xFF\x80z", 4)},
        {"no bytes", QByteArray("")},
        {"past", date(1, 1, 1)},
        {"before 1970", date(1969, 12, 31)},
        {"after 2069", date(4001, 1, 1)},
        {"list", QVariantList{1LL, "1", true, QVariantList(), QVariantMap()}},
        {"dictionary", QVariantMap{{"a", QVariantMap{{"b", QVariantList{0.5}}}}}},
    };
}

QByteArray binaryFrom(const QByteArray& xml) {
    const platform::PropertyListNode root =
        platform::readPropertyList({xml.constData(), static_cast<std::size_t>(xml.size())});
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(root.get(), &bytes, &length);
    const std::unique_ptr<char, decltype(&plist_to_bin_free)> owned(bytes, &plist_to_bin_free);
    return {bytes, static_cast<qsizetype>(length)};
}

QByteArray bigEndian(std::uint64_t number, int size) {
    QByteArray bytes;
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
        bytes.append(static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU));
    return bytes;
}

/// The binary form of arrays, each of which holds the next one `times`; an integer is innermost.
QByteArray binaryNest(unsigned depth, unsigned times) {
    QByteArray bytes = "bplist00";
    QByteArray offsets;
    for (unsigned i = 0; i < depth; ++i) {
        offsets += bigEndian(static_cast<std::uint64_t>(bytes.size()), 4);
        bytes += static_cast<char>(0xA0U | times);
        for (unsigned reference = 0; reference < times; ++reference)
            bytes += bigEndian(i + 1, 4);
    }
    offsets += bigEndian(static_cast<std::uint64_t>(bytes.size()), 4);
    bytes += QByteArray("\x10\x07", 2);
    const auto table = static_cast<std::uint64_t>(bytes.size());
    return bytes + offsets + QByteArray(6, '\0') + "\x04\x04" + bigEndian(depth + 1, 8) +
           bigEndian(0, 8) + bigEndian(table, 8);
}

QByteArray xmlOf(const QByteArray& element) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + element +
           "</plist>\n";
}

std::size_t depthOf(const QVariant& value) {
    std::size_t depth = 0;
    QVariantList list = value.toList();
    for (; !list.isEmpty(); list = list.first().toList())
        ++depth;
    return depth;
}

} // namespace

TEST(PropertyList, HoldsEveryTypeInXmlAndReadsItInBothForms) {
    const QByteArray xml = propertyListXml(everything());
    const QVariantMap fromXml = parsePropertyList(xml).value_or(QVariant()).toMap();
    const QVariantMap fromBinary = parsePropertyList(binaryFrom(xml)).value_or(QVariant()).toMap();
    const QVariantMap expected = everything();
    ASSERT_EQ(fromXml.keys(), expected.keys());
    ASSERT_EQ(fromBinary.keys(), expected.keys());
    for (auto entry = expected.begin(); entry != expected.end(); ++entry) {
        SCOPED_TRACE(entry.key().toStdString());
        EXPECT_TRUE(isSameValue(fromXml[entry.key()], entry.value()))
            << fromXml[entry.key()].toString().toStdString();
        EXPECT_TRUE(isSameValue(fromBinary[entry.key()], entry.value()))
            << fromBinary[entry.key()].toString().toStdString();
    }
    EXPECT_EQ(propertyListXml(fromXml), xml);
}

TEST(PropertyList, AcceptsWhatAUserOrAnotherProgramMayHaveWritten) {
    const struct {
        const char* what;
        QByteArray bytes;
        QVariant expected;
    } cases[] = {
        {"byte order mark", "\xEF\xBB\xBF" + xmlOf("<true/>"), true},
        {"hexadecimal", xmlOf("<integer>0x10</integer>"), 16LL},
        {"comment", xmlOf("<!-- </dict> --><string>a<!-- b -->c</string>"), "ac"},
        {"raw text", xmlOf("<string><![CDATA[<array>]]></string>"), "<array>"},
        {"character references", xmlOf("<string>&#x41;&#66;&quot;</string>"), "AB\""},
        {"no UTF-8", xmlOf("<string>a\xFFz</string>"), QString::fromUtf8("a\xEF\xBF\xBDz")},
        {"reference of an archive", xmlOf("<dict><key>CF$UID</key><integer>5</integer></dict>"),
         QVariantMap{{"CF$UID", 5LL}}},
    };
    for (const auto& [what, bytes, expected] : cases) {
        const auto value = parsePropertyList(bytes);
        EXPECT_TRUE(value && isSameValue(*value, expected)) << what;
    }
}

TEST(PropertyList, DamageDoesNoHarm) {
    const QByteArray xml = propertyListXml(everything());
    unsigned refused = 0;
    for (const QByteArray& whole : {xml, binaryFrom(xml)}) {
        for (qsizetype at = 0; at < whole.size(); ++at) {
            const auto cutOff = parsePropertyList(whole.first(at));
            ASSERT_TRUE(!cutOff || isSameValue(*cutOff, everything())) << at;
            for (const char byte : {'\0', '<', '\x7F', '\xFF'}) {
                QByteArray damaged = whole;
                damaged[at] = byte;
                const auto value = parsePropertyList(damaged);
                refused += value ? 0 : 1;
                if (value)
                    propertyListXml(*value);
            }
        }
    }
    EXPECT_GT(refused, 100U);
    for (const char* const text : {"", " ", "garbage", "<plist>", "<plist></plist>", "bplist00"})
        EXPECT_FALSE(parsePropertyList(text)) << text;
}

TEST(PropertyList, RefusesWhatIsNestedWithoutEnd) {
    const auto xmlNest = [](int depth, const QByteArray& between) {
        return xmlOf((QByteArray("<array>") + between).repeated(depth) +
                     QByteArray("</array>").repeated(depth));
    };
    constexpr int limit = platform::propertyListDepth;
    const auto fits = parsePropertyList(xmlNest(limit, ""));
    ASSERT_TRUE(fits);
    EXPECT_EQ(depthOf(*fits), limit - 1U); // the innermost is empty
    EXPECT_TRUE(parsePropertyList(binaryNest(limit, 1)));
    EXPECT_FALSE(parsePropertyList(binaryNest(limit + 1, 1)));
    for (const char* const disguise : {"", "<!-- </array> -->", "<?x </array> ?>"})
        EXPECT_FALSE(parsePropertyList(xmlNest(1'000'000, disguise))) << disguise;
    EXPECT_FALSE(parsePropertyList(binaryNest(500'000, 1)));
    EXPECT_FALSE(parsePropertyList(binaryNest(60, 2))) << "2^60 values";
}

TEST(PropertyList, StoresOfEachValueWhatXmlCanHold) {
    const struct {
        const char* what;
        QVariant value;
        QVariant expected;
    } cases[] = {
        {"int", -3, -3LL},
        {"unsigned", 4'000'000'000U, 4'000'000'000LL},
        {"float", 0.5F, 0.5},
        {"list of texts", QStringList{"a", "b"}, QVariantList{"a", "b"}},
        {"hash", QVariantHash{{"a", 1}}, QVariantMap{{"a", 1LL}}},
        {"milliseconds", date(2024, 2, 29).addMSecs(999), date(2024, 2, 29)},
        {"another time zone", date(2024, 2, 29).toOffsetFromUtc(7200), date(2024, 2, 29)},
        {"year that needs five digits", date(10000, 1, 1), {}},
        {"no date", QDateTime(), {}},
        {"nothing", {}, {}},
        {"null", QVariant::fromValue(nullptr), {}},
        {"nulls inside", QVariantMap{{"a", {}}, {"b", QVariantList{{}, 1}}},
         QVariantMap{{"b", QVariantList{1LL}}}},
        {"control characters", QString::fromUtf16(u"a\0\x01\x1F\tz", 6),
         QString::fromUtf16(u"a\xFFFD\xFFFD\xFFFD\tz")},
        {"half a pair", QString(QChar(0xD834)) + "z" + QChar(0xDD1E),
         QString::fromUtf16(u"\xFFFDz\xFFFD")},
        {"no character", QString(QChar(0xFFFE)), QString::fromUtf16(u"\xFFFD")},
    };
    for (const auto& [what, value, expected] : cases) {
        SCOPED_TRACE(what);
        EXPECT_TRUE(isSameValue(storableValue(value), expected));
        const auto back = parsePropertyList(propertyListXml(value));
        EXPECT_TRUE(isSameValue(back.value_or(QVariant()), expected));
    }
    QVariant deep = "innermost";
    for (int i = 0; i < 1000; ++i)
        deep = QVariantList{deep};
    EXPECT_EQ(depthOf(storableValue(deep)), platform::propertyListDepth - 1);
    EXPECT_TRUE(parsePropertyList(propertyListXml(deep)));
}

TEST(PropertyList, TellsValuesApartThatQtTakesForTheSame) {
    EXPECT_FALSE(isSameValue(true, 1LL));
    EXPECT_FALSE(isSameValue(1LL, 1.0));
    EXPECT_FALSE(isSameValue("1", 1LL));
    EXPECT_FALSE(isSameValue(QVariantList{true}, QVariantList{1LL}));
    EXPECT_FALSE(isSameValue(QVariantMap{{"a", 1LL}}, QVariantMap{{"a", 1LL}, {"b", 1LL}}));
    EXPECT_TRUE(isSameValue(std::nan(""), std::nan("")));
}
