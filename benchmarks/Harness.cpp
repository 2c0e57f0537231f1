#include "Harness.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace bench {

namespace {

struct Result {
    double ours;
    double peer; ///< unused without a peer
};

std::vector<Figure>& figures() {
    static std::vector<Figure> all;
    return all;
}

double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

Result measure(const Figure& figure) {
    const std::shared_ptr<void> surroundings =
        figure.surroundings ? figure.surroundings() : nullptr;
    std::vector<double> ours;
    std::vector<double> peer;
    figure.ours(); // warms up caches and the allocator
    for (int round = 0; round < figure.rounds; ++round) {
        if (figure.peer)
            peer.push_back(figure.peer());
        ours.push_back(figure.ours());
    }
    return {median(std::move(ours)), figure.peer ? median(std::move(peer)) : 0};
}

void print(const Figure& figure, const Result& result) {
    std::printf("%-28s %10.2f %-8s", figure.name.c_str(), result.ours, figure.unit.c_str());
    if (figure.peer)
        std::printf(" %10.2f %-22s ratio %.2f", result.peer, figure.peerName.c_str(),
                    result.ours / result.peer);
    std::printf("\n");
    std::fflush(stdout);
}

QJsonObject row(const Figure& figure, const Result& result) {
    const bool compared = static_cast<bool>(figure.peer);
    return {
        {QStringLiteral("name"), QString::fromStdString(figure.name)},
        {QStringLiteral("metric"), QString::fromStdString(figure.metric)},
        {QStringLiteral("unit"), QString::fromStdString(figure.unit)},
        {QStringLiteral("ours"), result.ours},
        {QStringLiteral("peer"), compared ? QJsonValue(result.peer) : QJsonValue()},
        {QStringLiteral("peer_name"),
         compared ? QJsonValue(QString::fromStdString(figure.peerName)) : QJsonValue()},
        {QStringLiteral("ratio"), compared ? QJsonValue(result.ours / result.peer) : QJsonValue()}};
}

bool writeResults(const QJsonArray& rows, const std::string& fileName) {
    QFile file(QString::fromStdString(fileName));
    if (file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(rows).toJson()) > 0 &&
        file.flush())
        return true;
    std::fprintf(stderr, "Couldn't write %s: %s\n", fileName.c_str(),
                 qUtf8Printable(file.errorString()));
    return false;
}

} // namespace

bool addFigure(Figure figure) {
    figures().push_back(std::move(figure));
    return true;
}

double nanosecondsEach(std::size_t count, const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
    return time.count() / static_cast<double>(count);
}

bool run(std::string_view filter, const std::string& resultFile) {
    QJsonArray rows;
    bool failed = false;
    for (const Figure& figure : figures()) {
        if (figure.name.find(filter) == std::string::npos)
            continue;
        try {
            const Result result = measure(figure);
            print(figure, result);
            rows.push_back(row(figure, result));
        } catch (const std::exception& error) {
            std::fprintf(stderr, "%s failed: %s\n", figure.name.c_str(), error.what());
            failed = true;
        }
    }
    if (failed)
        return false;
    if (rows.isEmpty()) {
        std::fprintf(stderr, "No figure's name contains \"%.*s\".\n",
                     static_cast<int>(filter.size()), filter.data());
        return false;
    }
    return writeResults(rows, resultFile);
}

} // namespace bench
