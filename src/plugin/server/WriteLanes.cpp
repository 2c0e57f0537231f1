#include "plugin/server/WriteLanes.h"

#include <algorithm>
#include <iterator>
#include <utility>

void WriteLanes::prepare(TimePoint now) {
    if (sharedLanes() == 0)
        open({}, now);
}

void WriteLanes::write(std::uint32_t stream, std::uint32_t owner, const VolumeWrite& change,
                       TimePoint now) {
    Stream& known = streams_.try_emplace(stream, Stream{owner, {}, false}).first->second;
    known.owner = owner;
    known.waiting.merge(change);
    if (!known.isSent)
        route(stream, now);
}

void WriteLanes::forget(std::uint32_t stream) {
    if (streams_.erase(stream) == 0)
        return;
    for (auto& [id, lane] : lanes_) {
        for (Change& change : lane.sent)
            change.isGone = change.isGone || change.stream == stream;
    }
}

void WriteLanes::answered(Lane id, int question, TimePoint now) {
    const auto found = lanes_.find(id);
    if (found == lanes_.end())
        return;
    State& lane = found->second;
    const auto last = std::ranges::find(lane.sent, question, &Change::question);
    if (last == lane.sent.end())
        return;
    const std::vector<Change> changes(std::make_move_iterator(lane.sent.begin()),
                                      std::make_move_iterator(last + 1));
    lane.sent.erase(lane.sent.begin(), last + 1);
    lane.lastNews = now;
    arrived(changes, now);
    if (lane.sent.empty())
        lane.suspect.reset();
    routeHeldUp(now);
}

void WriteLanes::broken(Lane id) {
    if (const auto lane = lanes_.find(id); lane != lanes_.end())
        lane->second.isBroken = true;
}

std::optional<WriteLanes::TimePoint> WriteLanes::due() const noexcept {
    std::optional<TimePoint> first;
    for (const auto& [id, lane] : lanes_) {
        TimePoint due = TimePoint::max();
        if (lane.isBroken || isForsaken(lane))
            due = {};
        else if (lane.sent.empty() && !isKept(id))
            due = lane.lastNews + restAfter;
        else if (!lane.sent.empty() && !lane.suspect)
            due = lane.lastNews + longestWait;
        if (due != TimePoint::max())
            first = std::min(first.value_or(due), due);
    }
    return first;
}

void WriteLanes::serve(TimePoint now) {
    std::vector<Lane> known;
    for (const auto& [id, lane] : lanes_)
        known.push_back(id);
    for (const Lane id : known) {
        const State& lane = lanes_.at(id);
        if (lane.isBroken || isForsaken(lane) ||
            (lane.sent.empty() && !isKept(id) && now - lane.lastNews >= restAfter))
            drop(id, now);
        else if (isOverdue(lane, now))
            isolate(id, now);
    }
    routeHeldUp(now);
}

bool WriteLanes::isSettled() const noexcept {
    const auto waitsForNobody = [](const auto& each) {
        return each.second.suspect || each.second.sent.empty();
    };
    return !heldUp_ && std::ranges::all_of(lanes_, waitsForNobody);
}

void WriteLanes::clear() {
    for (const auto& [id, lane] : std::exchange(lanes_, {}))
        transport_.close(id);
    streams_.clear();
    heldUp_ = false;
}

std::optional<WriteLanes::Lane> WriteLanes::open(std::optional<std::uint32_t> suspect,
                                                 TimePoint now) {
    if (!transport_.open(++newest_))
        return std::nullopt;
    lanes_[newest_] = {suspect, {}, now};
    return newest_;
}

/// What is open and may take a change now. The changes of one owner go one way: what it is slow to
/// answer does not delay others then.
WriteLanes::Lanes::iterator WriteLanes::laneFor(std::uint32_t stream, TimePoint now) {
    const std::uint32_t owner = streams_.at(stream).owner;
    auto open = lanes_.end();
    for (auto each = lanes_.begin(); each != lanes_.end(); ++each) {
        const State& lane = each->second;
        if (lane.isBroken)
            continue;
        if (lane.suspect == owner ||
            std::ranges::find(lane.sent, owner, &Change::owner) != lane.sent.end())
            return each;
        const bool isPatient = lane.sent.empty() || now - lane.lastNews < patience;
        const bool isBetter = open == lanes_.end() || !transport_.knows(open->first, stream);
        if (!lane.suspect && isPatient && isBetter)
            open = each;
    }
    return open;
}

std::size_t WriteLanes::sharedLanes() const noexcept {
    return static_cast<std::size_t>(
        std::ranges::count_if(lanes_, [](const auto& each) { return isShared(each.second); }));
}

/// The newest of those that all may use.
bool WriteLanes::isKept(Lane id) const noexcept {
    return isShared(lanes_.at(id)) &&
           std::none_of(lanes_.upper_bound(id), lanes_.end(),
                        [](const auto& each) { return isShared(each.second); });
}

void WriteLanes::route(std::uint32_t stream, TimePoint now) {
    auto lane = laneFor(stream, now);
    const bool isNew = lane != lanes_.end() && !transport_.knows(lane->first, stream);
    if (isNew || (lane == lanes_.end() && sharedLanes() >= mostShared)) {
        heldUp_ = true;
        return;
    }
    if (lane == lanes_.end()) {
        const auto opened = open({}, now);
        lane = opened ? lanes_.find(*opened) : lanes_.end();
    }
    if (lane != lanes_.end())
        send(lane, stream, now);
    else
        streams_.erase(stream);
}

void WriteLanes::send(Lanes::iterator lane, std::uint32_t stream, TimePoint now) {
    Stream& known = streams_.at(stream);
    State& state = lane->second;
    if (state.sent.empty())
        state.lastNews = now;
    VolumeWrite values = std::exchange(known.waiting, {});
    known.isSent = true;
    const int question = transport_.send(lane->first, stream, values);
    state.sent.push_back({question, stream, known.owner, std::move(values), false});
}

void WriteLanes::routeHeldUp(TimePoint now) {
    if (!std::exchange(heldUp_, false))
        return;
    std::vector<std::uint32_t> waiting;
    for (const auto& [id, stream] : streams_) {
        if (!stream.isSent)
            waiting.push_back(id);
    }
    for (const std::uint32_t stream : waiting)
        route(stream, now);
}

/// These are on their way no more; what has waited for them is sent.
void WriteLanes::arrived(const std::vector<Change>& changes, TimePoint now) {
    for (const Change& change : changes) {
        const auto stream = change.isGone ? streams_.end() : streams_.find(change.stream);
        if (stream == streams_.end())
            continue;
        stream->second.isSent = false;
        if (stream->second.waiting.isEmpty())
            streams_.erase(stream);
        else
            route(change.stream, now);
    }
}

bool WriteLanes::isOverdue(const State& lane, TimePoint now) noexcept {
    return !lane.suspect && !lane.sent.empty() && now - lane.lastNews >= longestWait;
}

/// A program that ends without an answer leaves its lane stuck for ever.
bool WriteLanes::isForsaken(const State& lane) noexcept {
    return lane.suspect && !lane.sent.empty() && std::ranges::all_of(lane.sent, &Change::isGone);
}

/// The program that has not answered for so long goes on in a lane of its own. All that the server
/// may not have read is sent again, in order and without what has been overtaken.
void WriteLanes::isolate(Lane stuck, TimePoint now) {
    const std::deque<Change> sent = std::move(lanes_.at(stuck).sent);
    transport_.close(stuck);
    lanes_.erase(stuck);
    const std::uint32_t owner = sent.front().owner;
    const bool isNeeded = std::ranges::any_of(
        sent, [owner](const Change& each) { return each.owner == owner && !each.isGone; });
    const bool isOpen = !isNeeded || open(owner, now).has_value();
    for (const Change& change : sent) {
        const auto known = change.isGone ? streams_.end() : streams_.find(change.stream);
        if (known == streams_.end())
            continue;
        Stream& stream = known->second;
        VolumeWrite values = change.values;
        values.merge(stream.waiting);
        stream.waiting = std::move(values);
        stream.isSent = false;
        if (isOpen)
            route(change.stream, now);
        else
            streams_.erase(known);
    }
    if (isOpen)
        prepare(now);
}

void WriteLanes::drop(Lane id, TimePoint now) {
    std::deque<Change> sent = std::move(lanes_.at(id).sent);
    transport_.close(id);
    lanes_.erase(id);
    arrived({std::make_move_iterator(sent.begin()), std::make_move_iterator(sent.end())}, now);
}
