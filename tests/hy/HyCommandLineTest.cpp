#include <Hy/HyCommandLine.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <random>
#include <vector>

namespace Hy {
namespace {

class Arguments {
public:
    explicit Arguments(std::vector<const char*> texts)
        : line(static_cast<int>(texts.size()), texts.data()) {}
    std::string rest() const {
        std::string text;
        for (int i = 0; i < line.count(); ++i)
            text += (i ? " " : "") + std::string(line[i]);
        return text;
    }
    HyCommandLine line;
};

const std::string kNoInt = "HyInfo{0}: Numerical parameter that should follow -n is missing! "
                           "Defaulting to 0.\n";
const std::string kNoReal = "HyInfo{0}: Floating point parameter that should follow -n is "
                            "missing! Defaulting to 0.\n";

TEST(HyCommandLineTest, ReadsNumbers) {
    struct Case {
        std::vector<const char*> arguments;
        bool eat;
        int integer;
        HyReal real;
        std::string restOfInteger, restOfReal;
        bool isMissingInteger, isMissingReal;
    };
    const Case cases[] = {
        {{"-n", "12", "x"}, true, 12, 12, "x", "x", false, false},
        {{"-n", "12", "x"}, false, 12, 12, "-n 12 x", "-n 12 x", false, false},
        {{"-n", "-2.5e1"}, true, -2, -25, "", "", false, false},
        {{"-n", "0", "x"}, true, 0, 0, "x", "x", false, false},
        {{"-n", "0.5"}, true, 0, 0.5, "0.5", "", true, false},
        {{"-n", "abc"}, true, 0, 0, "abc", "abc", true, true},
        {{"-n", "abc"}, false, 0, 0, "-n abc", "-n abc", true, true},
        {{"x", "-n"}, false, 0, 0, "x", "x", true, true},
        {{"x", "-nn", "3"}, true, 0, 0, "x -nn 3", "x -nn 3", false, false},
        {{"-n", "99999999999"}, true, 2147483647, 99999999999.0, "", "", false, false},
    };
    MessageCapture messages;
    for (const Case& c : cases) {
        Arguments a(c.arguments), b(c.arguments);
        const std::string what = a.rest() + (c.eat ? ", eaten" : "");
        EXPECT_EQ(a.line.getInt("-n", c.eat), c.integer) << what;
        EXPECT_EQ(messages.take(), c.isMissingInteger ? kNoInt : "") << what;
        EXPECT_EQ(a.rest(), c.restOfInteger) << what;
        EXPECT_EQ(b.line.getHyReal("-n", c.eat), c.real) << what;
        EXPECT_EQ(messages.take(), c.isMissingReal ? kNoReal : "") << what;
        EXPECT_EQ(b.rest(), c.restOfReal) << what;
    }
}

TEST(HyCommandLineTest, ReadsTexts) {
    const std::string missing = "HyInfo{0}: String parameter that should follow -s is missing! "
                                "Returning null pointer.\n";
    const std::string dash = "HyInfo{0}: String parameters aren't allowed to start with `-'.\n";
    struct Case {
        std::vector<const char*> arguments;
        bool eat;
        std::string value, rest, message;
    };
    const Case cases[] = {
        {{"-s", "a", "b"}, true, "a", "b", ""}, {{"-s", "a", "b"}, false, "a", "-s a b", ""},
        {{"b", "-s"}, false, "", "b", missing}, {{"-s", "-a"}, false, "", "-s -a", dash},
        {{"-s", "-a"}, true, "", "-a", dash},   {{"a"}, true, "", "a", ""},
    };
    MessageCapture messages;
    for (const Case& c : cases) {
        Arguments a(c.arguments);
        const std::string what = a.rest();
        EXPECT_EQ(a.line.getString("-s", c.eat), c.value) << what;
        EXPECT_EQ(a.rest(), c.rest) << what;
        EXPECT_EQ(messages.take(), c.message) << what;
    }
}

TEST(HyCommandLineTest, ReadsVectorsWholeOrNotAtAll) {
    const std::string missing = "HyInfo{0}: Floating point 3-vector that should follow -v is "
                                "missing or incomplete!\n";
    struct Case {
        std::vector<const char*> arguments;
        bool eat;
        int count;
        std::string rest, message;
    };
    const Case cases[] = {
        {{"a", "-v", "1", "2.5", "-3", "b"}, true, 3, "a b", ""},
        {{"-v", "1", "2.5", "-3"}, false, 3, "-v 1 2.5 -3", ""},
        {{"-v", "1", "2.5"}, false, 0, "1 2.5", missing},
        {{"-v", "1", "b", "3"}, true, 0, "1 b 3", missing},
        {{"-v", "1", "b", "3"}, false, 0, "-v 1 b 3", missing},
        {{"1", "2", "3"}, true, 0, "1 2 3", ""},
    };
    MessageCapture messages;
    for (const Case& c : cases) {
        Arguments a(c.arguments);
        const std::string what = a.rest();
        HyReal v[3] = {7, 7, 7};
        EXPECT_EQ(a.line.getHyRealArray("-v", v, 3, c.eat), c.count) << what;
        EXPECT_EQ(a.rest(), c.rest) << what;
        EXPECT_EQ(messages.take(), c.message) << what;
        const HyReal expected[2][3] = {{7, 7, 7}, {1, 2.5, -3}};
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(v[i], expected[c.count > 0][i]) << what;
    }
}

TEST(HyCommandLineTest, ChecksForOptions) {
    MessageCapture messages;
    Arguments a({"prog", "-q", "file", "-v", "-q"});
    const char* const names[] = {"-v", "-none", "-q", nullptr};
    const char* const none[] = {nullptr};
    EXPECT_TRUE(a.line.checkForList(names, false));
    EXPECT_EQ(a.line.count(), 5);
    EXPECT_TRUE(a.line.checkForList(names, true));
    EXPECT_EQ(a.rest(), "prog file -q");
    EXPECT_FALSE(a.line.checkForList(none, true));
    EXPECT_TRUE(a.line.checkFor("-q", true));
    EXPECT_FALSE(a.line.checkFor("-q", true));
    EXPECT_EQ(a.line.getPos("file"), 1);
    EXPECT_EQ(messages.take(), "");
    EXPECT_FALSE(a.line.checkFor(nullptr, true));
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: HyCommandLine::checkFor: You must pass in a valid char*\n");
    EXPECT_FALSE(a.line.checkForList(nullptr, true));
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: HyCommandLine::checkForList: You must pass in a valid char*[]\n");
}

TEST(HyCommandLineTest, EatsWhatExistsAlone) {
    MessageCapture messages;
    Arguments a({"a", "b", "c", "d", "e"});
    const int some[] = {3, 0, 4}, beyond[] = {1, 2}, twice[] = {1, 1};
    a.line.eatArg(some, 3);
    EXPECT_EQ(a.rest(), "b c");
    EXPECT_EQ(messages.take(), "");
    for (const int* positions : {beyond, twice, static_cast<const int*>(nullptr)}) {
        a.line.eatArg(positions, 2);
        EXPECT_NE(messages.take().find("HyCommandLine::eatArg: "), std::string::npos);
        EXPECT_EQ(a.rest(), "b c");
    }
    EXPECT_STREQ(a.line[2], "");
    EXPECT_NE(messages.take(), "");
    EXPECT_EQ(HyCommandLine(3, static_cast<const char**>(nullptr)).count(), 0);
}

// Whatever stands in a line, no more is removed than was read, and the rest keeps its order.
TEST(HyCommandLineTest, SurvivesAnyArguments) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    const char* const words[] = {"-n", "-s", "-v", "0", "0.0", "1e999", "nan", "", "-", "-1", "x"};
    MessageCapture messages;
    for (int i = 0; i < 20000; ++i) {
        std::vector<const char*> texts;
        for (auto n = random() % 8; n > 0; --n)
            texts.push_back(words[random() % std::size(words)]);
        Arguments a(texts);
        const auto eat = [&] { return random() % 2 == 0; };
        for (int call = 0; call < 4; ++call) {
            const int before = a.line.count();
            HyReal v[2];
            const char* const name = words[random() % 3];
            int most = 2;
            switch (random() % 5) {
            case 0:
                a.line.getInt(name, eat());
                break;
            case 1:
                a.line.getHyReal(name, eat());
                break;
            case 2:
                a.line.getString(name, eat());
                break;
            case 3:
                most = 3;
                a.line.getHyRealArray(name, v, 2, eat());
                break;
            default:
                most = 1;
                a.line.checkFor(name, eat());
            }
            ASSERT_LE(a.line.count(), before) << a.rest();
            ASSERT_GE(a.line.count(), before - most) << a.rest();
            auto place = texts.begin();
            for (int k = 0; k < a.line.count(); ++k, ++place) {
                place = std::find(place, texts.end(), a.line[k]);
                ASSERT_NE(place, texts.end()) << a.rest();
            }
        }
        messages.take();
    }
}

TEST(HyCommandLineTest, PrintsItsHelp) {
    Arguments a({"prog"});
    a.line.addOption("-n", "number of parts");
    a.line.addOption("-v", "gravity");
    testing::internal::CaptureStdout();
    a.line.printHelp();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "usage: [options]\noption: -n (number of parts)\noption: -v (gravity)\n");
}

} // namespace
} // namespace Hy
