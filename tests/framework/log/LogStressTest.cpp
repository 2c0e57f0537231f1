#include "LogFixture.h"

#include <array>
#include <map>
#include <sstream>
#include <thread>
#include <vector>

// Each line is whole and each thread's lines are in order.
TEST_F(LogTest, EightThreadsWriteWhileLevelsChangeAndLogsOpenAndClose) {
    constexpr int threads = 8;
    constexpr int each = 2000;
    {
        const Log shared = openLog(path("shared.log"), QNLOG_BOM);
        std::vector<std::thread> writers;
        writers.reserve(threads);
        for (int thread = 0; thread < threads; ++thread) {
            writers.emplace_back([&, thread] {
                for (int i = 0; i < each; ++i) {
                    qnlog_msg(shared.get(), i % 2 == 0 ? qnlog_information : qnlog_error,
                              "thread %d line %d", thread, i);
                    if (i % 500 == thread) {
                        qnlog_setlevel(shared.get(), i % 1000 == thread ? 15 : 4);
                        const Log own = openLog(path(std::to_string(thread) + ".log"),
                                                QNLOG_ROTATE | QNLOG_BANNER);
                        qnlog_msg(own.get(), qnlog_getlevel(shared.get()), "own");
                    }
                }
            });
        }
        for (std::thread& writer : writers)
            writer.join();
    }
    std::istringstream content(contentOf(path("shared.log")));
    std::array<int, threads> next{};
    for (std::string line; std::getline(content, line);) {
        const std::size_t at = line.find("thread ");
        if (at == std::string::npos)
            continue;
        EXPECT_EQ(at, 16U) << line; // behind time and tag
        int thread = 0;
        int number = 0;
        ASSERT_EQ(std::sscanf(line.c_str() + at, "thread %d line %d", &thread, &number), 2);
        EXPECT_EQ(number, next.at(static_cast<std::size_t>(thread))++);
    }
    for (const int count : next)
        EXPECT_EQ(count, each);
}
