#include "Harness.h"

#include "comm/MVCommParser.h"

#include <cstring>
#include <vector>

namespace {

constexpr std::size_t messages = 20000;

std::vector<std::byte> manyActivities() {
    std::vector<std::byte> bytes(messages * sizeof(MVCommActivityMessage));
    for (std::size_t i = 0; i < messages; ++i) {
        const MVCommActivityMessage message{kMVCommActivity, static_cast<std::uint32_t>(i), 0.5F};
        std::memcpy(bytes.data() + i * sizeof message, &message, sizeof message);
    }
    return bytes;
}

double parse() {
    static const std::vector<std::byte> bytes = manyActivities();
    [[maybe_unused]] static volatile float result; // so that the work cannot be left out
    return bench::nanosecondsEach(messages, [] {
        MVCommParser parser(bytes);
        float sum = 0;
        while (parser.next() == MVCommParser::Result::activity)
            sum += parser.activity().level;
        result = sum;
    });
}

[[maybe_unused]] const bool added =
    bench::addFigure({"wire/parse", "one activity message of a large read", "ns", &parse, {}, {}});

} // namespace
