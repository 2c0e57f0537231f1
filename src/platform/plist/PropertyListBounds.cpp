#include "platform/plist/PropertyListBounds.h"

#include "platform/plist/PropertyListNode.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace platform {

namespace {

/// Walks the objects of the binary form as libplist does, and gives up where that would be lost.
/// The form: "bplist00", the objects, a table of their offsets, a trailer of 32 bytes.
class BinaryWalk {
  public:
    explicit BinaryWalk(std::string_view bytes) : bytes_(bytes) {}

    bool isWithinBounds() {
        constexpr std::size_t header = 8;
        constexpr std::size_t trailer = 32;
        if (bytes_.size() < header + trailer)
            return false;
        const std::size_t end = bytes_.size() - trailer;
        offsetSize_ = number(end + 6, 1);
        referenceSize_ = number(end + 7, 1);
        objects_ = number(end + 8, 8);
        table_ = number(end + 24, 8);
        const auto isSize = [](std::uint64_t size) { return size >= 1 && size <= 8; };
        if (!isSize(offsetSize_) || !isSize(referenceSize_) || table_ > end ||
            objects_ > (end - table_) / offsetSize_)
            return false;
        return walk(number(end + 16, 8), 0);
    }

  private:
    std::uint64_t number(std::uint64_t at, std::uint64_t size) const {
        std::uint64_t value = 0;
        for (const char byte : bytes_.substr(at, size))
            value = value << 8U | static_cast<unsigned char>(byte);
        return value;
    }

    /// Where an object is; where there is none, beyond all of them.
    std::uint64_t place(std::uint64_t object) const {
        return object < objects_ ? number(table_ + object * offsetSize_, offsetSize_) : table_;
    }

    /// What a marker and the number object that may follow it tell.
    struct Head {
        unsigned kind;
        std::uint64_t count;
        std::uint64_t end; // where the content begins
    };
    Head head(std::uint64_t at) const {
        const auto marker = static_cast<unsigned>(number(at, 1));
        const unsigned kind = marker >> 4U;
        const std::uint64_t count = marker & 0xFU;
        if (count != 0xF)
            return {kind, count, at + 1};
        const std::uint64_t size = std::uint64_t{1} << (number(at + 1, 1) & 3U);
        return {kind, number(at + 2, size), at + 2 + size};
    }

    bool walk(std::uint64_t object, std::size_t depth) {
        const std::uint64_t at = place(object);
        if (at >= table_ || ++values_ > propertyListValues)
            return false;
        const auto [kind, count, first] = head(at);
        if (kind != array && kind != set && kind != dictionary)
            return true;
        const std::uint64_t perItem = kind == dictionary ? 2 : 1;
        if (depth >= propertyListDepth || first > table_ ||
            count > (table_ - first) / referenceSize_ / perItem)
            return false;
        for (std::uint64_t i = 0; i < count * perItem; ++i) {
            const std::uint64_t item = number(first + i * referenceSize_, referenceSize_);
            const bool isKey = kind == dictionary && i < count;
            if (isKey ? !isKeyWithoutNul(item) : !walk(item, depth + 1))
                return false;
        }
        return true;
    }

    /// libplist ends the program over a key with a NUL.
    bool isKeyWithoutNul(std::uint64_t object) const {
        const std::uint64_t at = place(object);
        if (at >= table_)
            return false;
        const auto [kind, count, first] = head(at);
        const std::uint64_t width = kind == utf16 ? 2 : 1;
        if ((kind != ascii && kind != utf16) || first > table_ || count > (table_ - first) / width)
            return false;
        for (std::uint64_t i = 0; i < count; ++i) {
            if (number(first + i * width, width) == 0)
                return false;
        }
        return true;
    }

    static constexpr unsigned ascii = 0x5, utf16 = 0x6, array = 0xA, set = 0xC, dictionary = 0xD;

    const std::string_view bytes_;
    std::uint64_t offsetSize_ = 0;
    std::uint64_t referenceSize_ = 0;
    std::uint64_t objects_ = 0;
    std::uint64_t table_ = 0; // where the table of offsets begins
    std::size_t values_ = 0;
};

/// The text behind `end`, which closes what `text` begins with; empty when it stays open.
std::string_view behind(std::string_view text, std::string_view end) {
    const std::size_t at = text.find(end);
    return at == text.npos ? std::string_view() : text.substr(at + end.size());
}

bool isXmlWithinBounds(std::string_view text) {
    if (text.find('\0') != text.npos) // as in the binary form; XML holds none
        return false;
    std::size_t depth = 0;
    while (!(text = text.substr(std::min(text.find('<'), text.size()))).empty()) {
        if (text.starts_with("<!--")) {
            text = behind(text.substr(4), "-->");
        } else if (text.starts_with("<![CDATA[")) {
            text = behind(text, "]]>");
        } else if (text.starts_with("<!") || text.starts_with("<?")) {
            text = behind(text, ">");
        } else {
            const std::string_view rest = behind(text, ">");
            const std::string_view tag = text.substr(0, text.size() - rest.size());
            if (tag.starts_with("</"))
                depth -= depth > 0 ? 1U : 0U;
            else if (!tag.ends_with("/>") && ++depth > propertyListDepth + 2) // <plist>, a scalar
                return false;
            text = rest;
        }
    }
    return true;
}

} // namespace

bool isWithinPropertyListBounds(std::string_view bytes) {
    if (bytes.empty() || bytes.size() > propertyListBytes)
        return false;
    return bytes.starts_with("bplist") ? BinaryWalk(bytes).isWithinBounds()
                                       : isXmlWithinBounds(bytes);
}

} // namespace platform
