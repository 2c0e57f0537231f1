#pragma once

#include <optional>
#include <string>
#include <variant>

/// What a monitor watches, as the caller named it: a URL, a path, an open descriptor, or, when made
/// without anything, something that cannot be watched. Items are equal when they are of the same
/// kind and say the same; a URL and the path that it stands for are not equal.
class WatchedItem {
  public:
    WatchedItem() = default;

    static WatchedItem url(std::string text) { return WatchedItem(Url{std::move(text)}); }
    static WatchedItem path(std::string text) { return WatchedItem(Path{std::move(text)}); }

    /// Not owned.
    static WatchedItem descriptor(int number) { return WatchedItem(number); }

    bool operator==(const WatchedItem&) const = default;

    /// Whether it is a URL of the scheme "file".
    bool isFileUrl() const;

    std::optional<int> descriptor() const;

    /// What the system's calls take: of a file URL the path, percent-decoded, of a path itself.
    /// Nothing when it cannot be had: a URL of another scheme or host, one without an absolute
    /// path, a wrong escape, a NUL inside.
    std::optional<std::string> fileSystemPath() const;

    /// For messages.
    std::string description() const;

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
