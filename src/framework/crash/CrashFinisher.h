#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform {
struct CrashProgram;
}

/// Makes reports of the records that programs have left in a folder of crashes when they died, and
/// removes what is too old or too much: 20 reports and 30 days stay. Several processes may do so at
/// once; they wait for each other. What fails is a line in the system log, and the record stays for
/// the next time.
class CrashFinisher {
  public:
    explicit CrashFinisher(std::string folder);

    /// Whether there is a record. Quick.
    [[nodiscard]] bool hasRecords() const;

    /// Does it. Takes seconds where there are large debug symbols; any thread. The number of new
    /// reports.
    unsigned finish() const;

    /// Writes the report of a program that could leave no record, having more rights than this
    /// user. False if it cannot be written.
    bool reportSignal(const platform::CrashProgram& program, int signal) const;

  private:
    struct Item {
        std::string name;
        std::int64_t time; ///< when it was changed last, in seconds since 1970
    };

    static std::vector<Item> itemsIn(const std::string& folder, std::string_view ending);
    bool finishRecord(const Item& record) const;
    bool store(const std::string& program, std::int64_t time, const std::string& text) const;
    void removeLeftovers() const;
    void removeSurplus() const;

    const std::string folder_;
};

/// What a program does about crashes once it runs, off its thread: takes the room for its own
/// record on the disk, and finishes those of others in this user's folder. Returns at once.
void tendCrashRecords();
