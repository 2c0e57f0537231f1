#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <pipewire/filter.h>
#include <pipewire/keys.h>
#include <spa/utils/hook.h>
#include <vector>

/// A node in the sound server that measures the peak at each of its mono inputs. It is not a
/// recording stream: it has no media class and does not make the sound server run. Inputs are
/// borrowed one by one; all are created before the node is connected and destroyed with it, so that
/// the list never changes for the data thread. The run loop's thread only; destroy it before the
/// server's connection.
class MeterFilter {
  public:
    /// The sound server wakes us for each filter in each cycle, so a few large filters cost less
    /// than many small ones. But every client of the server is notified of each input.
    static constexpr std::size_t fewestInputs = 8;
    static constexpr std::size_t mostInputs = 64;

    /// The number of inputs of a filter that needs `needed` of them, within the bounds: some spare
    /// ones, so that not every new stream needs a new filter, but not many, since each has a cost
    /// in each cycle.
    static std::size_t inputsFor(std::size_t needed) noexcept;

    /// `inputs` is clamped to the bounds. `changed` is called when nodeId() or isBroken() may have
    /// changed; it must not destroy the filter. Null, after a line in the log, if the server
    /// refuses.
    [[nodiscard]] static std::unique_ptr<MeterFilter> create(pw_core& core, std::size_t inputs,
                                                             std::function<void()> changed);
    ~MeterFilter();
    MeterFilter(const MeterFilter&) = delete;
    MeterFilter& operator=(const MeterFilter&) = delete;

    /// The node's number; nothing until the server has given one.
    [[nodiscard]] std::optional<std::uint32_t> nodeId() const;

    /// Whether the node has failed in the server and does not measure any more.
    [[nodiscard]] bool isBroken() const noexcept { return broken_; }

    [[nodiscard]] std::size_t inputs() const noexcept { return borrowed_.size(); }
    [[nodiscard]] std::size_t freeInputs() const noexcept;

    /// Lends a free input; nothing when all are in use.
    [[nodiscard]] std::optional<std::size_t> borrowInput() noexcept;
    void returnInput(std::size_t input) noexcept { borrowed_[input] = false; }

    /// The highest peak since the last call, linear; nothing when no cycle has come since.
    std::optional<float> takePeak(std::size_t input) noexcept;

  private:
    /// All that the data thread touches. The lists are filled before the node is connected; only
    /// the peaks are shared between the threads, side by side so that few cache lines travel.
    struct Realtime {
        static constexpr float nothingMeasured = -1.0F;
        static_assert(std::atomic<float>::is_always_lock_free);
        std::vector<void*> ports;
        std::vector<std::atomic<float>> peaks; // by input
    };

    struct FilterDeleter {
        void operator()(pw_filter* filter) const noexcept { pw_filter_destroy(filter); }
    };

    MeterFilter(std::size_t inputs, std::function<void()> changed);
    int connect(pw_core& core);
    bool addInputs();
    void stateChanged(pw_filter_state state, const char* error);

    /// On the data thread, once a cycle: must not wait, allocate or log.
    static void measure(void* data, spa_io_position* position) noexcept;

    static const pw_filter_events filterEvents;

    Realtime rt_;

    // The run loop's thread only.
    const std::function<void()> changed_;
    std::vector<bool> borrowed_; // by input
    bool broken_ = false;
    spa_hook hook_{}; // the filter leaves it when it goes; the data thread may use it until then
    std::unique_ptr<pw_filter, FilterDeleter> filter_;
};
