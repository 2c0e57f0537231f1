#pragma once

#include <functional>
#include <memory>

class QByteArray;
class QNApplication;

/// The classes of application objects that are looked up by name. Main thread only.
class ApplicationClasses {
  public:
    using Factory = std::function<std::unique_ptr<QNApplication>()>;

    /// Makes a class known, in place of one that had the name before.
    static void add(const QByteArray& name, const Factory& factory);
    static void remove(const QByteArray& name);

    /// Empty when there is no class of that name.
    static Factory find(const QByteArray& name);
};
