#include "samplesound/Recording.h"

#include <memory>
#include <numeric>
#include <sndfile.h>

namespace {

constexpr sf_count_t longest = 60; // seconds
constexpr int mostChannels = 8;

struct SoundFileCloser {
    void operator()(SNDFILE* file) const noexcept { sf_close(file); }
};

} // namespace

Recording Recording::read(const std::filesystem::path& path,
                          const platform::SampleOutput::Report& report) {
    SF_INFO info{};
    const std::unique_ptr<SNDFILE, SoundFileCloser> file(sf_open(path.c_str(), SFM_READ, &info));
    if (file == nullptr || info.samplerate <= 0 || info.channels > mostChannels) {
        report("Couldn't read the recording " + path.string() + ": " + sf_strerror(file.get()));
        return {};
    }
    Recording recording{static_cast<std::uint32_t>(info.samplerate), {}};
    const auto channels = static_cast<std::size_t>(info.channels);
    const sf_count_t most = longest * info.samplerate;
    std::vector<float> block(channels * 4096);
    while (recording.samples.size() < static_cast<std::size_t>(most)) {
        const sf_count_t frames = sf_readf_float(file.get(), block.data(), 4096);
        if (frames <= 0)
            break;
        for (std::size_t frame = 0; frame < static_cast<std::size_t>(frames); ++frame) {
            const float* const first = block.data() + frame * channels;
            recording.samples.push_back(std::accumulate(first, first + channels, 0.0F) /
                                        static_cast<float>(channels));
        }
    }
    return recording;
}
