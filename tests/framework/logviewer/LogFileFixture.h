#pragma once

#include "support/PrivateFolder.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

/// A log file of a test.
class LogFileFixture {
  public:
    static constexpr std::string_view date = "2014-03-07 09:00:00 +100\n";

    LogFileFixture() = default;
    explicit LogFileFixture(std::string_view text) { append(text); }

    std::string path() const { return folder_.path() / "Tonvale.log"; }
    std::string path(const char* name) const { return folder_.path() / name; }

    void append(std::string_view text) const {
        std::ofstream(path(), std::ios::binary | std::ios::app) << text;
    }

    /// Messages numbered from `first` on, each in its second, with a date line for each hour.
    static std::string messages(int first, int count, std::string_view text = "message") {
        constexpr int minutes = 60;
        constexpr int hours = minutes * minutes;
        std::string lines;
        char head[64];
        for (int i = first; i < first + count; ++i) {
            if (i % hours == 0 || i == first) {
                std::snprintf(head, sizeof head, "2014-03-%02d %02d:00:00 +100\n",
                              7 + i / hours / 24, i / hours % 24);
                lines += head;
            }
            std::snprintf(head, sizeof head, ":%02d:%02d.%-3d: [%c] ", i / minutes % minutes,
                          i % minutes, i % 1000, "IIIIWIIIIE"[i % 10]);
            lines += head;
            lines += text;
            lines += ' ' + std::to_string(i) + '\n';
        }
        return lines;
    }

  private:
    const support::PrivateFolder folder_;
};
