#include "plugin/server/AudioGraph.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;
using Kind = AudioGlobal::Kind;

namespace {

constexpr std::uint32_t sink = 10;
constexpr std::uint32_t otherSink = 11;
constexpr std::uint32_t meter = 12;
constexpr std::uint32_t stream = 20;
constexpr std::uint32_t left = 21;
constexpr std::uint32_t right = 22;

class AudioGraphTest : public testing::Test {
  protected:
    AudioGraphTest() {
        addNode(sink, "Audio/Sink", "out");
        addNode(otherSink, "Audio/Sink", "headphones");
        addNode(meter, "", kMeterNodeName);
        addNode(stream, "Stream/Output/Audio", "player");
        addPort(right, stream, 1, "out"); // ports come in any order
        addPort(left, stream, 0, "out");
    }

    void addNode(std::uint32_t id, const std::string& mediaClass, const std::string& name) {
        graph_.add({id,
                    Kind::node,
                    {{"media.class", mediaClass}, {"node.name", name}, {"client.id", "5"}}});
    }
    void addPort(std::uint32_t id, std::uint32_t node, int number, const std::string& direction) {
        graph_.add({id,
                    Kind::port,
                    {{"node.id", std::to_string(node)},
                     {"port.id", std::to_string(number)},
                     {"port.direction", direction}}});
    }
    void addLink(std::uint32_t id, std::uint32_t from, std::uint32_t to) {
        graph_.add({id,
                    Kind::link,
                    {{"link.output.node", std::to_string(from)},
                     {"link.input.node", std::to_string(to)}}});
    }

    AudioGraph graph_;
};

} // namespace

TEST_F(AudioGraphTest, EachChannelOfAStreamIsMeasuredAtItsSink) {
    addLink(30, stream, sink);
    addLink(31, stream, sink);
    EXPECT_THAT(graph_.planTaps({stream}),
                ElementsAre(MeterTap{stream, left, sink, 0}, MeterTap{stream, right, sink, 1}));
}

TEST_F(AudioGraphTest, AStreamThatIsNotListenedToOrFeedsNothingIsNotMeasured) {
    EXPECT_THAT(graph_.planTaps({stream}), IsEmpty());
    addLink(30, stream, sink);
    EXPECT_THAT(graph_.planTaps({}), IsEmpty());
}

TEST_F(AudioGraphTest, OurOwnLinksSayNothingOfWhereAStreamIsHeard) {
    addLink(29, stream, meter);
    EXPECT_FALSE(graph_.sinkOf(stream));
    addLink(30, stream, otherSink);
    EXPECT_EQ(graph_.sinkOf(stream), otherSink);
}

TEST_F(AudioGraphTest, ASinkCountsMoreThanAnotherListener) {
    addNode(13, "Stream/Input/Audio", "recorder");
    addLink(28, stream, 13);
    EXPECT_EQ(graph_.sinkOf(stream), 13U);
    addLink(30, stream, sink);
    EXPECT_EQ(graph_.sinkOf(stream), sink);
}

TEST_F(AudioGraphTest, AMovedStreamIsMeasuredAtItsNewSink) {
    addLink(30, stream, sink);
    addLink(31, stream, otherSink);
    graph_.remove(30);
    EXPECT_EQ(graph_.planTaps({stream}).at(0).sink, otherSink);
}

TEST_F(AudioGraphTest, AStreamWhoseChannelsChangeIsMeasuredAtItsNewPorts) {
    addLink(30, stream, sink);
    graph_.remove(left);
    graph_.remove(right);
    EXPECT_THAT(graph_.planTaps({stream}), IsEmpty());
    addPort(right, otherSink, 0, "in"); // its id was reused by another node
    addPort(60, stream, 0, "out");
    EXPECT_THAT(graph_.planTaps({stream}), ElementsAre(MeterTap{stream, 60, sink, 0}));
}

TEST_F(AudioGraphTest, NumbersAreUsedAgainForOtherKindsOfObjects) {
    addLink(stream, otherSink, sink); // the number of the stream, whose removal was not announced
    EXPECT_FALSE(graph_.isOutputStream(stream));
    graph_.remove(stream);
    graph_.remove(stream);
    graph_.remove(4711);
    EXPECT_FALSE(graph_.sinkOf(otherSink));
}

TEST_F(AudioGraphTest, ObjectsWithDamagedNumbersAreLeftOut) {
    graph_.add({40, Kind::port, {{"node.id", "2O"}, {"port.id", "0"}, {"port.direction", "out"}}});
    graph_.add({41, Kind::port, {{"port.direction", "out"}}});
    graph_.add({42, Kind::link, {{"link.output.node", "20"}}});
    EXPECT_THAT(graph_.outputPorts(stream), ElementsAre(left, right));
    EXPECT_FALSE(graph_.sinkOf(stream));
}

TEST_F(AudioGraphTest, InputsAreFoundByTheirNumberAndMonitorsAreNoOutputs) {
    addPort(50, meter, 0, "in");
    addPort(51, meter, 1, "in");
    EXPECT_EQ(graph_.inputPort(meter, 1), 51U);
    EXPECT_FALSE(graph_.inputPort(meter, 2));
    graph_.add({52,
                Kind::port,
                {{"node.id", "10"},
                 {"port.id", "0"},
                 {"port.direction", "out"},
                 {"port.monitor", "true"}}});
    EXPECT_THAT(graph_.outputPorts(sink), IsEmpty());
}

TEST_F(AudioGraphTest, NodesOfOneProcessHaveOneOwner) {
    const auto addClient = [this](std::uint32_t id, AudioGlobal::Properties properties) {
        graph_.add({id, Kind::client, std::move(properties)});
    };
    const auto addStreamOf = [this](std::uint32_t id, const std::string& client) {
        graph_.add({id, Kind::node, {{"client.id", client}, {"object.serial", "7" + client}}});
    };
    addClient(40, {{"pipewire.sec.pid", "4711"}});
    addClient(41, {{"pipewire.sec.pid", "4711"}});
    addClient(42, {{"pipewire.sec.pid", "4712"}});
    addClient(43, {});
    for (std::uint32_t client = 40; client < 45; ++client)
        addStreamOf(client + 10, std::to_string(client));
    graph_.add({60, Kind::node, {}});
    EXPECT_EQ(graph_.ownerOf(50), graph_.ownerOf(51));
    const std::set<std::uint32_t> owners{graph_.ownerOf(50), graph_.ownerOf(52), graph_.ownerOf(53),
                                         graph_.ownerOf(54), graph_.ownerOf(60)};
    EXPECT_EQ(owners.size(), 5U) << "what is not known is nobody else's";
    EXPECT_EQ(graph_.serialOf(52), 742U);
    EXPECT_EQ(graph_.serialOf(60), 0U);
    graph_.remove(54);
    EXPECT_EQ(graph_.newestSerial(), 744U);
}
