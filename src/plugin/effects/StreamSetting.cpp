#include "plugin/effects/StreamSetting.h"

#include "plugin/volume/StreamVolume.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <spa/utils/json.h>

namespace {

constexpr std::size_t longestText = 4096;
constexpr std::size_t mostChannels = 64;

std::optional<std::string_view> next(spa_json& iterator) {
    const char* token = nullptr;
    const int size = spa_json_next(&iterator, &token);
    if (size <= 0)
        return std::nullopt;
    return std::string_view(token, static_cast<std::size_t>(size));
}

int sizeOf(std::string_view token) {
    return static_cast<int>(token.size());
}

bool isContainer(std::string_view token) {
    return spa_json_is_container(token.data(), sizeOf(token)) != 0;
}

/// The whole of a value of which `token` is the beginning.
std::optional<std::string_view> wholeOf(spa_json& iterator, std::string_view token) {
    if (!isContainer(token))
        return token;
    const int size = spa_json_container_len(&iterator, token.data(), sizeOf(token));
    const std::string_view whole(token.data(), static_cast<std::size_t>(size));
    if (whole.data() + whole.size() > iterator.end) // not closed
        return std::nullopt;
    return whole;
}

std::optional<bool> boolIn(std::string_view token) {
    bool value = false;
    if (spa_json_parse_bool(token.data(), sizeOf(token), &value) <= 0)
        return std::nullopt;
    return value;
}

/// The tokens of an array of simple values; none of anything else.
std::vector<std::string_view> elementsOf(std::string_view array) {
    std::vector<std::string_view> elements;
    spa_json outer{};
    spa_json inner{};
    spa_json_init(&outer, array.data(), array.size());
    if (spa_json_enter_array(&outer, &inner) <= 0)
        return elements;
    while (const auto element = next(inner))
        elements.push_back(*element);
    return elements;
}

std::vector<float> volumesIn(std::string_view array) {
    std::vector<float> volumes;
    for (const std::string_view element : elementsOf(array)) {
        float volume = 0.0F;
        if (spa_json_parse_float(element.data(), sizeOf(element), &volume) <= 0 ||
            !std::isfinite(volume) || volume < 0.0F || volumes.size() == mostChannels)
            return {};
        volumes.push_back(volume);
    }
    return volumes;
}

bool isPlain(char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z') ||
           (letter >= '0' && letter <= '9');
}

std::vector<std::string> channelsIn(std::string_view array) {
    std::vector<std::string> channels;
    for (std::string_view element : elementsOf(array)) {
        if (element.size() < 3 || !element.starts_with('"') || !element.ends_with('"') ||
            channels.size() == mostChannels)
            return {};
        element = element.substr(1, element.size() - 2);
        if (!std::all_of(element.begin(), element.end(), isPlain))
            return {};
        channels.emplace_back(element);
    }
    return channels;
}

void take(std::string_view key, std::string_view value, StreamSetting& setting) {
    if (key == R"("mute")")
        setting.mute = boolIn(value);
    else if (key == R"("volumes")")
        setting.volumes = volumesIn(value);
    else if (key == R"("channels")")
        setting.channels = channelsIn(value);
    else
        setting.others.append(key).append(":").append(value).append(",");
}

/// As a decimal fraction, which every reader understands and none takes for a whole number.
std::string textOf(float number) {
    std::array<char, 64> text{};
    const auto end =
        std::to_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    std::string result(text.data(), end.ptr);
    if (result.find('.') == std::string::npos)
        result += ".0";
    return result;
}

template <typename Element, typename Format>
std::string arrayOf(const std::vector<Element>& elements, Format format) {
    std::string text;
    for (const Element& element : elements)
        text += (text.empty() ? "" : ",") + format(element);
    return "[" + text + "]";
}

} // namespace

std::optional<StreamSetting> parseStreamSetting(std::string_view text) {
    if (text.size() > longestText)
        return std::nullopt;
    const std::string terminated(text); // numbers are read up to the first foreign character
    spa_json outer{};
    spa_json object{};
    spa_json_init(&outer, terminated.data(), terminated.size());
    if (spa_json_enter_object(&outer, &object) <= 0)
        return std::nullopt;
    StreamSetting setting;
    while (const auto key = next(object)) {
        if (isContainer(*key))
            return std::nullopt;
        const auto begin = next(object);
        const auto value = begin ? wholeOf(object, *begin) : std::nullopt;
        if (value)
            take(*key, *value, setting);
    }
    if (object.cur == object.end || *object.cur != '}')
        return std::nullopt;
    return setting;
}

std::string formatStreamSetting(const StreamSetting& setting) {
    // The others come first: some readers let a single "volume" replace what stands before it.
    std::string text = setting.others;
    if (setting.mute)
        text += R"("mute":)" + std::string(*setting.mute ? "true" : "false") + ",";
    if (!setting.volumes.empty())
        text += R"("volumes":)" + arrayOf(setting.volumes, textOf) + ",";
    if (!setting.channels.empty())
        text +=
            R"("channels":)" +
            arrayOf(setting.channels, [](const std::string& name) { return '"' + name + '"'; }) +
            ",";
    if (!text.empty())
        text.pop_back();
    return "{" + text + "}";
}

bool haveSameEffect(const StreamSetting& a, const StreamSetting& b) noexcept {
    return a.mute == b.mute && areSameGains(a.volumes, b.volumes);
}
