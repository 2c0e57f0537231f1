#include "Harness.h"
#include "platform/defaults/PropertyList.h"
#include "platform/defaults/UserDefaults.h"
#include "support/PrivateFolder.h"

#include <QFile>
#include <QVariant>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <stdexcept>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr unsigned sets = 300;
constexpr const char* key = "programs";

/// What is kept of 50 programs, one of which is being dragged.
QVariantMap programs(double volume) {
    QVariantMap all;
    for (int i = 0; i < 50; ++i) {
        all.insert(QStringLiteral("/usr/lib/program-%1/program").arg(i),
                   QVariantMap{{"name", QStringLiteral("Program %1").arg(i)},
                               {"muted", i % 2 == 0},
                               {"volume", i == 25 ? volume : 0.5}});
    }
    return all;
}

double volumeAt(unsigned step) {
    return static_cast<double>(step) / sets;
}

void expectSaved(const std::filesystem::path& path) {
    QFile file(QString::fromStdString(path.string()));
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("there is no file of defaults");
    const auto root = platform::parsePropertyList(file.readAll()).value_or(QVariant()).toMap();
    if (!platform::isSameValue(root[key], programs(volumeAt(sets - 1))))
        throw std::runtime_error("the last value is not in the file");
}

/// As a slider sets it while it is dragged, and the file is saved meanwhile.
double drag() {
    const support::PrivateFolder folder;
    const auto path = folder.path() / "bench.plist";
    std::vector<double> costs;
    costs.reserve(sets);
    {
        platform::UserDefaults defaults(path);
        auto due = Clock::now();
        for (unsigned i = 0; i < sets; ++i) {
            due += 8ms;
            std::this_thread::sleep_until(due);
            const QVariantMap value = programs(volumeAt(i));
            const auto begin = Clock::now();
            defaults.set(key, value);
            costs.push_back(
                std::chrono::duration<double, std::micro>(Clock::now() - begin).count());
        }
    }
    expectSaved(path);
    const auto place = costs.begin() + static_cast<std::ptrdiff_t>(0.99 * sets);
    std::nth_element(costs.begin(), place, costs.end());
    return *place;
}

[[maybe_unused]] const bool added =
    bench::addFigure({"defaults/set/p99",
                      "cost of setting 50 programs' values, one every 8 ms",
                      "us",
                      &drag,
                      {},
                      {}});

} // namespace
