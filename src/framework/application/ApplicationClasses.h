#pragma once

#include <functional>
#include <memory>

class QByteArray;
class QNApplication;

/// The registry of application classes, which are looked up by name. Main thread only.
class ApplicationClasses {
  public:
    using Factory = std::function<std::unique_ptr<QNApplication>()>;

    /// Registers a class, replacing one of the same name.
    static void add(const QByteArray& name, const Factory& factory);
    static void remove(const QByteArray& name);

    /// Empty when there is no class of that name.
    static Factory find(const QByteArray& name);
};
