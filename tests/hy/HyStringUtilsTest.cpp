#include <Hy/DumpFileHelper.h>
#include <Hy/HyStringUtils.h>
#include <Hy/HyVersion.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

namespace Hy {
namespace {

TEST(HyStringUtilsTest, FormatsAnyLength) {
    const std::string text(10000, 'x');
    EXPECT_EQ(HyStringUtils::format("%s %d%%", text.c_str(), 5), text + " 5%");
    EXPECT_EQ(HyStringUtils::format("%s", ""), "");
}

TEST(HyStringUtilsTest, CollectionHandsOutUniqueNames) {
    using Names = HyStringUtils::UniqueNamesCollection;
    struct Case {
        Names::StyleType style;
        std::vector<const char*> taken, expected;
    };
    const Case cases[] = {
        {Names::IncrementStyle,
         {"box", "  box ", "box 1", "box 7", "box 7", "a 1x", "a 1x", "9", "9", "x 1", "", "",
          "y  3", "y  3"},
         {"box", "box 1", "box 2", "box 7", "box 3", "a 1x", "a 1x 1", "9", "9 1", "x 1", "", " 1",
          "y  3", "y  1"}},
        {Names::CopyStyle,
         {"box", "box", "box (1)", "b (x)", "b (x)", "(4)", "(4)", "c()", "c()", "d(2)", "d(2)"},
         {"box", "box (1)", "box (2)", "b (x)", "b (x) (1)", "(4)", "(4) (1)", "c()", "c() (1)",
          "d(2)", "d (1)"}},
    };
    for (const Case& c : cases) {
        Names names(c.style);
        for (std::size_t i = 0; i < c.taken.size(); ++i)
            EXPECT_EQ(names.add(c.taken[i]), c.expected[i]) << i;
        EXPECT_TRUE(names.exists(c.expected[1]));
        names.clear();
        EXPECT_FALSE(names.exists(c.expected[1]));
    }
}

/// The definition of a match, case by case.
bool matchByDefinition(const char* text, const char* pattern) {
    if (*pattern == '\0')
        return *text == '\0';
    if (*pattern == '*')
        return matchByDefinition(text, pattern + 1) ||
               (*text != '\0' && matchByDefinition(text + 1, pattern));
    return *text != '\0' && (*pattern == '?' || *pattern == *text) &&
           matchByDefinition(text + 1, pattern + 1);
}

TEST(HyStringUtilsTest, MatchesAsTheDefinitionDoes) {
    const unsigned seed = std::random_device()();
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    const auto word = [&](const std::string& letters) {
        std::string text;
        for (auto i = random() % 9; i > 0; --i)
            text += letters[random() % letters.size()];
        return text;
    };
    int matches = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string text = word("ab"), pattern = word("ab*?");
        const bool expected = matchByDefinition(text.c_str(), pattern.c_str());
        matches += expected;
        ASSERT_EQ(HyStringUtils::match(text, pattern, true), expected) << text << ' ' << pattern;
    }
    EXPECT_GT(matches, 100);
    EXPECT_TRUE(HyStringUtils::match("Arm.OBJ", "a*.obj", false));
    EXPECT_FALSE(HyStringUtils::match("Arm.OBJ", "a*.obj", true));
    // Exponential where a star is tried anew for each later one.
    const std::string stars = "a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*a*b";
    EXPECT_FALSE(HyStringUtils::match(std::string(5000, 'a'), stars, true));
}

TEST(HyVersionTest, OrdersByTheFirstNumberThatDiffers) {
    const HyVersion ordered[] = {{0, 9, 9}, {1, 0, 0}, {1, 0, 2}, {1, 2, 0}, {2, 0, 0}};
    for (int i = 0; i < 5; ++i)
        for (int j = 0; j < 5; ++j)
            EXPECT_EQ(ordered[i].compare(ordered[j]), (i > j) - (i < j)) << i << ' ' << j;
    EXPECT_EQ(ordered[2].toString(), "1.0.2");
}

TEST(DumpFileHelperTest, SharesOneFile) {
    MessageCapture messages;
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "halcyr_dump";
    std::filesystem::create_directories(folder);
    const std::string path = folder / "a.txt", other = folder / "b.txt";
    {
        const DumpFileHelper first(path.c_str());
        std::fputs("one ", first.getFilePtr());
        {
            const DumpFileHelper second(other.c_str());
            EXPECT_EQ(second.getFilePtr(), first.getFilePtr());
            std::fputs("two ", second.getFilePtr());
        }
        std::fputs("three", first.getFilePtr());
    }
    std::string text;
    std::getline(std::ifstream(path), text);
    EXPECT_EQ(text, "one two three");
    EXPECT_FALSE(std::filesystem::exists(other));
    EXPECT_EQ(DumpFileHelper(nullptr).getFilePtr(), stderr);
    EXPECT_EQ(messages.take(), "");
    EXPECT_EQ(DumpFileHelper((folder / "none" / "c.txt").c_str()).getFilePtr(), stderr);
    EXPECT_NE(messages.take().find("DumpFileHelper::DumpFileHelper: "), std::string::npos);
    std::filesystem::remove_all(folder);
}

} // namespace
} // namespace Hy
