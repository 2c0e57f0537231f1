#include "framework/application/OptionParser.h"

#include <gtest/gtest.h>

#include <vector>

TEST(OptionParser, ReadsOptionsUntilThePlainArgument) {
    struct Case {
        QStringList arguments;
        QNOptions options;
    };
    const std::vector<Case> cases = {
        {{}, {}},
        {{"-v", "--name=x", "file", "-w"}, {{"v", "v"}, {"name", "x"}}},
        {{"-level", "=", "5"}, {{"level", "5"}}},
        {{"-level", "="}, {}},
        {{"--", "-a"}, {}},
        {{"-file", " some where \n", "-x"}, {{"file", "some where"}, {"x", "x"}}},
        {{"name=a=b", "-name = c", "-q"}, {{"name", "c"}, {"q", "q"}}},
        {{"--path==x"}, {{"path", "=x"}}},
        {{"-last", "value"}, {{"last", "value"}}},
        {{"-empty="}, {{"empty", ""}}},
        {{"-"}, {{"", ""}}},
        {{"-level", "=", "-5", "-x"}, {{"level", "-5"}, {"x", "x"}}},
        {{"--a-b--", "-c"}, {{"a-b", "a-b"}, {"c", "c"}}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(parseQNOptions(QStringList{"program"} + each.arguments), each.options)
            << each.arguments.join(u' ').toStdString();
    EXPECT_EQ(parseQNOptions({}), QNOptions());
}
