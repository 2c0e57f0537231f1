#include "plugin/identity/PseudoPids.h"

#include <string_view>

namespace {

std::uint32_t naturalNumber(std::string_view program) {
    // FNV-1a, since it must be the same in each run.
    std::uint32_t hash = 2166136261U;
    for (const char each : program)
        hash = (hash ^ static_cast<unsigned char>(each)) * 16777619U;
    return PseudoPids::first + hash % (PseudoPids::last - PseudoPids::first + 1);
}

} // namespace

std::uint32_t PseudoPids::take(const std::string& program) {
    const auto displaced = displaced_.find(program);
    if (displaced != displaced_.end())
        return displaced->second;
    const std::uint32_t natural = naturalNumber(program);
    std::uint32_t number = natural;
    for (;;) {
        const auto [owner, isFree] = owners_.emplace(number, program);
        if (isFree || owner->second == program)
            break;
        number = number == last ? first : number + 1;
    }
    if (number != natural)
        displaced_[program] = number;
    return number;
}

void PseudoPids::release(const std::string& program) {
    if (!displaced_.contains(program))
        std::erase_if(owners_, [&program](const auto& owner) { return owner.second == program; });
}
