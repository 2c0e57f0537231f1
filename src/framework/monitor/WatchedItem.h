#pragma once

#include <optional>
#include <string>
#include <variant>

/// What a monitor watches, as the caller named it: a URL, a path, an open descriptor, or, if
/// default-constructed, something that cannot be watched. Items are equal if kind and value are
/// equal; a URL and its path are not equal.
class WatchedItem {
  public:
    WatchedItem() = default;

    static WatchedItem url(std::string text) { return WatchedItem(Url{std::move(text)}); }
    static WatchedItem path(std::string text) { return WatchedItem(Path{std::move(text)}); }

    /// Not owned.
    static WatchedItem descriptor(int number) { return WatchedItem(number); }

    bool operator==(const WatchedItem&) const = default;

    /// Whether it is a URL of the scheme "file".
    [[nodiscard]] bool isFileUrl() const;

    [[nodiscard]] std::optional<int> descriptor() const;

    /// The path for system calls: of a file URL its path, percent-decoded; of a path the path
    /// itself. Nothing if there is none: a URL of another scheme or host, one without an absolute
    /// path, an invalid escape, a NUL inside.
    [[nodiscard]] std::optional<std::string> fileSystemPath() const;

    /// For messages.
    [[nodiscard]] std::string description() const;

  private:
    struct Url {
        std::string text;
        bool operator==(const Url&) const = default;
    };
    struct Path {
        std::string text;
        bool operator==(const Path&) const = default;
    };
    using Value = std::variant<std::monostate, Url, Path, int>;

    explicit WatchedItem(Value value) : value_(std::move(value)) {}

    Value value_;
};
