#include "Harness.h"

#include "platform/files/DirectoryComparison.h"
#include "support/PrivateFolder.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int folders = 200;
constexpr int filesEach = 100;

std::string randomBytes(std::mt19937& random) {
    std::uniform_int_distribution<std::size_t> size(100, 8 * 1024);
    std::string bytes(size(random), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random());
    return bytes;
}

/// Two equal trees. What has just been written is in the cache.
class Trees {
  public:
    Trees() {
        std::mt19937 random; // without a seed: the same files each time
        for (int folder = 0; folder < folders; ++folder) {
            for (const std::string& tree : {left(), right()})
                std::filesystem::create_directories(tree + "/" + std::to_string(folder));
            for (int file = 0; file < filesEach; ++file)
                write("/" + std::to_string(folder) + "/" + std::to_string(file),
                      randomBytes(random));
        }
        current = this;
    }
    ~Trees() { current = nullptr; }
    Trees(const Trees&) = delete;
    Trees& operator=(const Trees&) = delete;

    std::string left() const { return folder_.path() / "left"; }
    std::string right() const { return folder_.path() / "right"; }

    static inline const Trees* current = nullptr;

  private:
    void write(const std::string& path, const std::string& bytes) const {
        for (const std::string& tree : {left(), right()}) {
            if (!std::ofstream(tree + path, std::ios::binary)
                     .write(bytes.data(), static_cast<std::streamsize>(bytes.size()))
                     .flush())
                throw std::runtime_error("cannot write " + tree + path);
        }
    }

    const support::PrivateFolder folder_;
};

template <typename Work>
double milliseconds(const Work& areEqual) {
    const auto begin = Clock::now();
    if (!areEqual())
        throw std::runtime_error("equal trees count as different");
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double compare() {
    return milliseconds([] {
        return platform::isDirectoryEqualToDirectory(Trees::current->left(),
                                                     Trees::current->right());
    });
}

double compareByDiff() {
    const std::string command =
        "exec diff -rq '" + Trees::current->left() + "' '" + Trees::current->right() + "'";
    return milliseconds([&] { return std::system(command.c_str()) == 0; });
}

[[maybe_unused]] const bool added =
    bench::addFigure({.name = "install/check/20000",
                      .metric = "deciding that two trees of 20,000 files are equal",
                      .unit = "ms",
                      .ours = &compare,
                      .peerName = "diff -rq",
                      .peer = &compareByDiff,
                      .surroundings = [] { return std::make_shared<Trees>(); }});

} // namespace
