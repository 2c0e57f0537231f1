#include "plugin/PseudoNumbers.h"

#include "platform/processes/StreamProcess.h"

using platform::StreamProcess;

std::uint32_t PseudoNumbers::take(const std::string& identity, std::uint32_t natural) {
    const auto displaced = displaced_.find(identity);
    if (displaced != displaced_.end())
        return displaced->second;
    std::uint32_t number = natural;
    for (;;) {
        const auto [owner, isFree] = owners_.emplace(number, identity);
        if (isFree || owner->second == identity)
            break;
        number = number == StreamProcess::lastPseudoProcess ? StreamProcess::firstPseudoProcess
                                                            : number + 1;
    }
    if (number != natural)
        displaced_[identity] = number;
    return number;
}

void PseudoNumbers::release(const std::string& identity) {
    if (!displaced_.contains(identity))
        std::erase_if(owners_, [&identity](const auto& owner) { return owner.second == identity; });
}
