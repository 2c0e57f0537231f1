#include "comm/MVCommParser.h"

#include <algorithm>
#include <cstring>

MVCommParser::Result MVCommParser::next() noexcept {
    if (rest_.empty())
        return Result::end;
    if (rest_.size() < sizeof messageID_)
        return Result::tooShort;
    std::memcpy(&messageID_, rest_.data(), sizeof messageID_);

    if (messageID_ == kMVCommActivity) {
        if (rest_.size() < sizeof activity_)
            return Result::invalidLength;
        std::memcpy(&activity_, rest_.data(), sizeof activity_);
        rest_ = rest_.subspan(sizeof activity_);
        return Result::activity;
    }
    if (messageID_ == kMVCommCheckin) {
        if (rest_.size() < sizeof(MVCommCheckinMessage))
            return Result::invalidLength;
        std::memcpy(&checkin_.pid, rest_.data() + offsetof(MVCommCheckinMessage, pid),
                    sizeof checkin_.pid);
        checkin_.name = textAt(offsetof(MVCommCheckinMessage, name));
        checkin_.path = textAt(offsetof(MVCommCheckinMessage, path));
        rest_ = rest_.subspan(sizeof(MVCommCheckinMessage));
        return Result::checkin;
    }
    return Result::unknown;
}

std::string_view MVCommParser::textAt(std::size_t offset) const noexcept {
    const auto bytes = rest_.first(sizeof(MVCommCheckinMessage)).subspan(offset);
    const auto end = std::find(bytes.begin(), bytes.end(), std::byte{0});
    return {reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::size_t>(end - bytes.begin())};
}
