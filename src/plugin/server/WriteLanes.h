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
/// called lanes. The server reads nothing more from a connection until the program that owns the
/// stream has acknowledged a change, and a stopped program never does. So each change is followed
/// by a sync request, called question, and the oldest unanswered one identifies the program that
/// blocks a lane. Such a program gets its own lane until it answers; the changes behind it are sent
/// again over another one.
///
/// All responsive programs share a lane, which is kept open: on a busy machine the server may take
/// longer to accept a connection than a new stream takes to become audible. A second one is opened
/// for changes while a program is slow. While a change of a stream is in flight, later ones of that
/// stream wait and are merged. Has no clock, timer or connection. Any thread, one at a time.
class WriteLanes {
  public:
    using TimePoint = platform::MonotonicClock::time_point;
    using Lane = std::uint32_t;

    /// After this time without an answer, a lane accepts no changes of other programs.
    static constexpr std::chrono::milliseconds patience{20};

    /// After this time without an answer, a program counts as stopped.
    static constexpr std::chrono::milliseconds longestWait{250};

    /// An idle lane is closed this long after its last answer, unless it is the one to keep.
    static constexpr std::chrono::seconds restAfter{5};

    static constexpr std::size_t mostShared = 2;

    /// The connections. None of these may call back.
    class Transport {
      public:
        virtual ~Transport() = default;

        /// Opens a connection with the id `lane`. False if the server accepts none.
        [[nodiscard]] virtual bool open(Lane lane) = 0;

        /// Closes the connection. The server must drop what it has not read.
        virtual void close(Lane lane) = 0;

        /// Whether the server has announced the stream on this connection. It refuses requests for
        /// objects that it has not announced. A new connection knows all objects.
        [[nodiscard]] virtual bool knows(Lane lane, std::uint32_t stream) const = 0;

        /// Sends the change, then a question, and returns the question's number.
        virtual int send(Lane lane, std::uint32_t stream, const VolumeWrite& change) = 0;
    };

    /// `transport` must outlive this.
    explicit WriteLanes(Transport& transport) noexcept : transport_(transport) {}

    /// Opens the lane that is kept. Otherwise the first change does.
    void prepare(TimePoint now);

    /// Changes a stream as soon as possible. `owner` identifies the process that serves the stream.
    /// Changes are lost if the server accepts no connection.
    void write(std::uint32_t stream, std::uint32_t owner, const VolumeWrite& change, TimePoint now);

    /// The stream no longer exists.
    void forget(std::uint32_t stream);

    /// A stream was announced on some lane.
    void heard(TimePoint now) { routeHeldUp(now); }

    /// The question and all before it in the lane have been answered.
    void answered(Lane lane, int question, TimePoint now);

    /// The lane's connection was lost, with its changes in flight.
    void broken(Lane lane);

    /// When to call serve() if nothing else happens.
    [[nodiscard]] std::optional<TimePoint> due() const noexcept;

    /// Handles timeouts, and closes lanes. The only operation that closes any.
    void serve(TimePoint now);

    /// Whether all changes are done except those of programs that do not answer.
    [[nodiscard]] bool isSettled() const noexcept;

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
        std::optional<std::uint32_t> suspect; ///< the only owner that may use this lane
        std::deque<Change> sent;              ///< and not answered
        TimePoint lastNews;                   ///< the last answer, or when `sent` began to fill
        bool isBroken = false;
    };
    struct Stream {
        std::uint32_t owner;
        VolumeWrite waiting;
        bool isSent; ///< an earlier change is in flight
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
    std::map<std::uint32_t, Stream> streams_; // with a change waiting or in flight
    bool heldUp_ = false;                     // some stream has no lane yet
};
