#include "plugin/server/WriteLanes.h"

#include <gmock/gmock.h>

#include <set>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t streamsOfOwner = 10;

std::uint32_t ownerOf(std::uint32_t stream) {
    return stream / streamsOfOwner;
}

VolumeWrite gain(float value) {
    return {std::vector{value}, std::nullopt};
}

/// A server that serves each connection in order, and none further than to the first change of a
/// program that does not answer. Such a program does what it was told when it goes on.
class WriteLanesTest : public testing::Test, protected WriteLanes::Transport {
  protected:
    WriteLanes::TimePoint now_{1h};
    std::set<std::uint32_t> stopped_; // owners
    bool refuses_ = false;
    std::set<std::uint32_t> unknown_; // streams that no connection has been told of
    std::map<WriteLanes::Lane, std::deque<std::function<bool()>>> connections_;
    std::map<std::uint32_t, std::vector<float>> gains_; // that each stream got, in order
    std::map<std::uint32_t, bool> mutes_;
    WriteLanes lanes_{*this};

    bool open(WriteLanes::Lane lane) override {
        EXPECT_FALSE(connections_.contains(lane));
        return !refuses_ && connections_.try_emplace(lane).second;
    }
    void close(WriteLanes::Lane lane) override { EXPECT_EQ(connections_.erase(lane), 1U); }
    bool knows(WriteLanes::Lane /*lane*/, std::uint32_t stream) const override {
        return !unknown_.contains(stream);
    }
    int send(WriteLanes::Lane lane, std::uint32_t stream, const VolumeWrite& change) override {
        const int question = ++questions_;
        connections_.at(lane).push_back([this, lane, stream, change, question] {
            if (stopped_.contains(ownerOf(stream)))
                return false;
            if (change.channelVolumes)
                gains_[stream].push_back(change.channelVolumes->front());
            if (change.mute)
                mutes_[stream] = *change.mute;
            lanes_.answered(lane, question, now_);
            return true;
        });
        return question;
    }

    void write(std::uint32_t stream, const VolumeWrite& change) {
        lanes_.write(stream, ownerOf(stream), change, now_);
    }

    /// Has the server do what it can, with all that follows from it.
    void turn() {
        bool isBusy = true;
        while (std::exchange(isBusy, false)) {
            for (auto& [lane, requests] : connections_) {
                while (!requests.empty() && requests.front()()) {
                    requests.pop_front();
                    isBusy = true;
                }
            }
        }
    }

    void pass(std::chrono::milliseconds time) {
        now_ += time;
        turn();
        if (lanes_.due() && *lanes_.due() <= now_)
            lanes_.serve(now_);
        turn();
    }

    /// The last gain of a stream; 0 before the first.
    float gainOf(std::uint32_t stream) {
        return gains_[stream].empty() ? 0.0F : gains_[stream].back();
    }

  private:
    int questions_ = 0;
};

} // namespace

TEST_F(WriteLanesTest, AllThatAnswerShareOneConnectionWhichIsKept) {
    lanes_.prepare(now_);
    EXPECT_THAT(connections_, SizeIs(1));
    for (const float value : {0.5F, 0.25F}) {
        for (std::uint32_t stream = 0; stream < 300; ++stream)
            write(stream, gain(value));
        EXPECT_THAT(connections_, SizeIs(1));
        EXPECT_FALSE(lanes_.isSettled());
        turn();
        EXPECT_TRUE(lanes_.isSettled());
        for (std::uint32_t stream = 0; stream < 300; ++stream)
            EXPECT_EQ(gainOf(stream), value);
        EXPECT_FALSE(lanes_.due()) << "nothing wakes anybody while nothing is to be done";
    }
    EXPECT_THAT(connections_, SizeIs(1));
}

TEST_F(WriteLanesTest, AStreamUnknownToTheConnectionWaitsUntilItIsAnnounced) {
    lanes_.prepare(now_);
    unknown_ = {11};
    write(10, gain(0.5F));
    write(11, gain(0.5F));
    turn();
    EXPECT_EQ(gainOf(10), 0.5F);
    EXPECT_EQ(gainOf(11), 0.0F);
    EXPECT_FALSE(lanes_.isSettled());
    unknown_.clear();
    lanes_.heard(now_);
    turn();
    EXPECT_EQ(gainOf(11), 0.5F);
    EXPECT_THAT(connections_, SizeIs(1));
}

TEST_F(WriteLanesTest, WhatComesWhileAChangeIsOnItsWayBecomesOne) {
    write(1, gain(0.9F));
    write(1, gain(0.8F));
    write(1, {std::nullopt, true});
    write(1, gain(0.7F));
    turn();
    EXPECT_THAT(gains_[1], ElementsAre(0.9F, 0.7F));
    EXPECT_TRUE(mutes_.at(1));
}

TEST_F(WriteLanesTest, AStoppedProgramDelaysOthersOnceAndForABoundedTime) {
    stopped_ = {2};
    for (const std::uint32_t stream : {10U, 20U, 21U, 30U, 40U})
        write(stream, gain(0.5F));
    turn();
    EXPECT_EQ(gainOf(10), 0.5F);
    EXPECT_EQ(gainOf(30), 0.0F) << "the server does not come so far";
    EXPECT_EQ(lanes_.due(), now_ + WriteLanes::longestWait);
    write(40, gain(0.4F));
    write(21, gain(0.4F));
    pass(WriteLanes::longestWait);
    EXPECT_EQ(gainOf(30), 0.5F);
    EXPECT_EQ(gainOf(40), 0.4F);
    EXPECT_TRUE(lanes_.isSettled()) << "as far as can be";

    // From now on it is alone.
    for (const std::uint32_t stream : {20U, 10U, 30U})
        write(stream, gain(0.3F));
    turn();
    EXPECT_EQ(gainOf(10), 0.3F);
    EXPECT_EQ(gainOf(30), 0.3F);
    pass(WriteLanes::restAfter * 2);
    EXPECT_THAT(connections_, SizeIs(2)) << "what is its own waits for it";

    stopped_.clear();
    turn();
    EXPECT_EQ(gainOf(20), 0.3F);
    EXPECT_EQ(gainOf(21), 0.4F);
    pass(WriteLanes::restAfter - 1ms);
    EXPECT_THAT(connections_, SizeIs(2));
    pass(1ms);
    EXPECT_THAT(connections_, SizeIs(1));
    EXPECT_EQ(gainOf(10), 0.3F) << "nothing old comes late";
    EXPECT_EQ(gainOf(40), 0.4F);
}

TEST_F(WriteLanesTest, EachOfSeveralThatStopIsFoundAndAloneThen) {
    stopped_ = {2, 4};
    for (const std::uint32_t stream : {10U, 20U, 30U, 40U, 41U, 50U})
        write(stream, gain(0.5F));
    turn();
    pass(WriteLanes::longestWait);
    EXPECT_EQ(gainOf(30), 0.5F);
    pass(WriteLanes::longestWait);
    EXPECT_EQ(gainOf(50), 0.5F);
    EXPECT_THAT(connections_, SizeIs(3)) << "one each, and that of the others";
    pass(WriteLanes::longestWait * 10);
    stopped_ = {4};
    turn();
    EXPECT_EQ(gainOf(20), 0.5F);
    EXPECT_EQ(gainOf(41), 0.0F);
    write(20, gain(0.6F));
    turn();
    EXPECT_EQ(gainOf(20), 0.6F);
}

TEST_F(WriteLanesTest, WhoComesWhileSomebodyIsSlowDoesNotWaitBehind) {
    stopped_ = {2, 4};
    write(20, gain(0.5F));
    pass(WriteLanes::patience);
    write(10, gain(0.5F));
    turn();
    EXPECT_EQ(gainOf(10), 0.5F);
    write(40, gain(0.5F));
    write(21, gain(0.5F));
    pass(WriteLanes::patience);
    write(30, gain(0.5F));
    turn();
    EXPECT_THAT(connections_, SizeIs(WriteLanes::mostShared));
    EXPECT_FALSE(lanes_.isSettled());
    EXPECT_EQ(gainOf(30), 0.0F);
    pass(WriteLanes::longestWait - WriteLanes::patience * 2);
    EXPECT_EQ(gainOf(30), 0.5F) << "as soon as the first is found out";
}

TEST_F(WriteLanesTest, AProgramThatEndsUnansweredLeavesNothing) {
    stopped_ = {2};
    write(20, gain(0.5F));
    write(10, gain(0.5F));
    pass(WriteLanes::longestWait);
    lanes_.forget(20);
    ASSERT_TRUE(lanes_.due());
    pass(0ms);
    EXPECT_THAT(connections_, SizeIs(1));

    // The same before it has been found out, with a new stream of the same number.
    stopped_ = {3};
    write(30, gain(0.5F));
    write(11, gain(0.5F));
    lanes_.forget(30);
    lanes_.forget(11);
    write(11, gain(0.25F));
    pass(WriteLanes::longestWait);
    EXPECT_THAT(gains_[11], ElementsAre(0.25F));
    EXPECT_THAT(connections_, SizeIs(1));
    EXPECT_TRUE(lanes_.isSettled());
}

TEST_F(WriteLanesTest, ConnectionsThatFailLoseChangesAndNothingElse) {
    refuses_ = true;
    write(10, gain(0.5F));
    EXPECT_TRUE(lanes_.isSettled());
    EXPECT_FALSE(lanes_.due());

    refuses_ = false;
    write(20, gain(0.4F));
    write(20, gain(0.3F));
    lanes_.broken(connections_.begin()->first);
    write(10, gain(0.4F));
    turn();
    pass(0ms);
    EXPECT_EQ(gainOf(10), 0.4F);
    EXPECT_EQ(gainOf(20), 0.3F);
    EXPECT_THAT(connections_, SizeIs(1));

    stopped_ = {2};
    write(20, gain(0.5F));
    write(10, gain(0.5F));
    refuses_ = true;
    pass(WriteLanes::longestWait);
    EXPECT_THAT(connections_, IsEmpty());
    EXPECT_TRUE(lanes_.isSettled());
    refuses_ = false;
    write(10, gain(0.6F));
    turn();
    EXPECT_EQ(gainOf(10), 0.6F);
    lanes_.clear();
    EXPECT_THAT(connections_, IsEmpty());
}
