#include "comm/MVCommParser.h"

#include <cstdlib>

// Any bytes are a read: the parser must consume them or stop, and its texts must lie within them.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span read(reinterpret_cast<const std::byte*>(data), size);
    const char* const begin = reinterpret_cast<const char*>(data);
    const auto isInside = [&](std::string_view text) {
        return text.data() >= begin && text.data() + text.size() <= begin + size;
    };
    MVCommParser parser(read);
    std::int32_t left = parser.remaining();
    for (;;) {
        const auto result = parser.next();
        if (result == MVCommParser::Result::checkin) {
            if (!isInside(parser.checkin().name) || !isInside(parser.checkin().path))
                std::abort();
        } else if (result != MVCommParser::Result::activity) {
            return 0;
        }
        if (parser.remaining() >= left)
            std::abort();
        left = parser.remaining();
    }
}
