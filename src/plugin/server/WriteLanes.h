#pragma once

#include "platform/base/MonotonicClock.h"
#include "plugin/volume/StreamVolume.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <vector>

/// Decides when each change of a stream is sent, and over which of a few connections to the server,
/// called lanes. The server takes nothing more from a connection until the program that owns the
/// stream has answered a change, and one that is stopped never does. So each change is followed by
/// a question, and the oldest question without an answer names the program that holds up a lane.
/// Such a program gets a lane of its own until it answers; what was behind it is sent again over
/// another one.
///
/// All programs that answer share a lane, which is kept: on a busy machine the server may take
/// longer to accept a connection than a new stream takes to be heard. A second one is opened for
/// what comes while somebody is slow. While a change of a stream is on its way, later ones of that
/// stream wait and become one. Owns no clock, timer or connection. Any thread, one at a time.
class WriteLanes {
  public:
    using TimePoint = platform::MonotonicClock::time_point;
    using Lane = std::uint32_t;

    /// From this long without an answer on, a lane takes nothing of other programs.
    static constexpr std::chrono::milliseconds patience{20};

    /// From this long without an answer on, a program is taken to be stopped.
    static constexpr std::chrono::milliseconds longestWait{250};

    /// So long after its last answer a lane is closed, unless it is the one to keep.
    static constexpr std::chrono::seconds restAfter{5};

    static constexpr std::size_t mostShared = 2;

    /// The connections. None of these may call back.
    class Transport {
      public:
        virtual ~Transport() = default;

        /// Makes a connection that is called `lane` from now on. False when the server takes none.
        virtual bool open(Lane lane) = 0;

        /// Ends the connection. What the server has not read of it must be lost.
        virtual void close(Lane lane) = 0;

        /// Whether the server has told this connection of the stream. It refuses what a connection
        /// asks of an object that is too new for it. A new connection knows all.
        virtual bool knows(Lane lane, std::uint32_t stream) const = 0;

        /// Sends the change, then a question, and answers the number of that.
        virtual int send(Lane lane, std::uint32_t stream, const VolumeWrite& change) = 0;
    };

    /// `transport` must outlive this.
    explicit WriteLanes(Transport& transport) noexcept : transport_(transport) {}

    /// Opens the lane that is kept. Without it the first change does.
    void prepare(TimePoint now);

    /// Changes a stream as soon as it can be done. `owner` stands for the process that serves the
    /// stream. What the server takes no connection for is lost.
    void write(std::uint32_t stream, std::uint32_t owner, const VolumeWrite& change, TimePoint now);

    /// The stream has gone.
    void forget(std::uint32_t stream);

    /// Some lane knows a stream more.
    void heard(TimePoint now) { routeHeldUp(now); }

    /// The question and all before it in the lane have been answered.
    void answered(Lane lane, int question, TimePoint now);

    /// The lane's connection has ended by itself. What was on its way there is lost.
    void broken(Lane lane);

    /// When serve() is to be called if nothing else happens.
    std::optional<TimePoint> due() const noexcept;

    /// Gives up waiting, and closes lanes. The only operation that closes any.
    void serve(TimePoint now);

    /// Whether all has been done but what waits for programs that do not answer.
    bool isSettled() const noexcept;

    /// Closes all lanes and forgets all changes.
    void clear();

  private:
    struct Change {
        int question;
        std::uint32_t stream;
        std::uint32_t owner;
        VolumeWrite values;
        bool isGone; ///< its stream
    };
    struct State {
        std::optional<std::uint32_t> suspect; ///< the only owner that this lane is for
        std::deque<Change> sent;              ///< and not answered
        TimePoint lastNews;                   ///< the last answer, or when `sent` began to fill
        bool isBroken = false;
    };
    struct Stream {
        std::uint32_t owner;
        VolumeWrite waiting;
        bool isSent; ///< a change before that is on its way
    };
    using Lanes = std::map<Lane, State>;

    std::optional<Lane> open(std::optional<std::uint32_t> suspect, TimePoint now);
    Lanes::iterator laneFor(std::uint32_t stream, TimePoint now);
    static bool isShared(const State& lane) noexcept { return !lane.suspect && !lane.isBroken; }
    std::size_t sharedLanes() const noexcept;
    bool isKept(Lane lane) const noexcept;
    void route(std::uint32_t stream, TimePoint now);
    void send(Lanes::iterator lane, std::uint32_t stream, TimePoint now);
    void routeHeldUp(TimePoint now);
    void arrived(const std::vector<Change>& changes, TimePoint now);
    void isolate(Lane lane, TimePoint now);
    void drop(Lane lane, TimePoint now);
    static bool isOverdue(const State& lane, TimePoint now) noexcept;
    static bool isForsaken(const State& lane) noexcept;

    Transport& transport_;
    Lane newest_ = 0;
    Lanes lanes_;
    std::map<std::uint32_t, Stream> streams_; // that have a change waiting or on its way
    bool heldUp_ = false;                     // some stream found no lane yet
};
