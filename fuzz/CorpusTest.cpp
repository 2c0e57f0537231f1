#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// A fuzzer's own checks end the program.
TEST(Corpus, EveryInputIsTaken) {
    std::size_t inputs = 0;
    for (const auto& entry : std::filesystem::directory_iterator(TONVALE_CORPUS)) {
        SCOPED_TRACE(entry.path());
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()),
                                         bytes.size()),
                  0);
        ++inputs;
    }
    EXPECT_GT(inputs, 0U);
}
