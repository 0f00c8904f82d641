#include <Kit/KitProfile.h>
#include "KitTestSupport.h"
#include <gtest/gtest.h>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

/// Whether each bracket outside of strings is closed by its mate.
bool bracketsMatch(const std::string& json) {
    std::string open;
    bool inString = false;
    for (std::size_t i = 0; i < json.size(); ++i) {
        const char c = json[i];
        if (inString && c == '\\')
            ++i;
        else if (c == '"')
            inString = !inString;
        else if (!inString && (c == '{' || c == '['))
            open.push_back(c == '{' ? '}' : ']');
        else if (!inString && (c == '}' || c == ']')) {
            if (open.empty() || open.back() != c)
                return false;
            open.pop_back();
        }
    }
    return open.empty() && !inString;
}

class KitProfileTest : public testing::Test {
protected:
    void SetUp() override {
        KitProfileClear();
        KitProfileSetEnabled(true);
    }
    void TearDown() override {
        KitProfileSetEnabled(false);
        KitProfileSetHook({});
        KitProfileClear();
    }
    static std::vector<KitProfileZone> zonesNamed(const char* name) {
        std::vector<KitProfileZone> zones;
        for (std::size_t t = 0; t < KitProfileGetThreadCount(); ++t)
            for (std::size_t i = 0; i < KitProfileGetZoneCount(t); ++i)
                if (const KitProfileZone zone = KitProfileGetZone(t, i);
                    std::strcmp(zone.name, name) == 0)
                    zones.push_back(zone);
        return zones;
    }
};

TEST_F(KitProfileTest, ZonesNestAndEndInTheirOrder) {
    {
        const KitProfileScope outer("outer");
        const KitProfileScope inner("inner");
    }
    KitProfileSetEnabled(false);
    { const KitProfileScope unseen("unseen"); }
    const auto outer = zonesNamed("outer"), inner = zonesNamed("inner");
    ASSERT_EQ(outer.size(), 1U);
    ASSERT_EQ(inner.size(), 1U);
    EXPECT_LE(outer[0].start, inner[0].start);
    EXPECT_LE(inner[0].start, inner[0].end);
    EXPECT_LE(inner[0].end, outer[0].end);
    EXPECT_TRUE(zonesNamed("unseen").empty());
    EXPECT_EQ(KitProfileGetZone(KitProfileGetThreadCount(), 0).name, nullptr);
}

TEST_F(KitProfileTest, RingKeepsTheLastZones) {
    { const KitProfileScope zone("early"); }
    for (std::size_t i = 0; i < KitProfileRingSize; ++i)
        const KitProfileScope zone("late");
    EXPECT_TRUE(zonesNamed("early").empty());
    EXPECT_EQ(zonesNamed("late").size(), KitProfileRingSize);
}

// The hook hears of zones whether rings are kept or not, and each begin has its end.
TEST_F(KitProfileTest, HookHearsOfEachBeginAndEnd) {
    static std::string heard;
    heard.clear();
    KitProfileSetEnabled(false);
    KitProfileSetHook({[](const char* name) { heard += std::string("<") + name; },
                       [](const char* name) { heard += std::string(">") + name; }});
    {
        const KitProfileScope a("a");
        const KitProfileScope b("b");
    }
    KitProfileSetHook({});
    { const KitProfileScope c("c"); }
    EXPECT_EQ(heard, "<a<b>b>a");
    EXPECT_TRUE(zonesNamed("a").empty());
}

// A thread that has ended leaves its row to the next one, so that rows do not pile up.
TEST_F(KitProfileTest, ThreadsHaveRowsOfTheirOwn) {
    { const KitProfileScope zone("here"); }
    for (int i = 0; i < 3; ++i)
        std::thread([] { const KitProfileScope zone("there"); }).join();
    EXPECT_EQ(zonesNamed("there").size(), 3U);
    EXPECT_LE(KitProfileGetThreadCount(), 2U);
}

TEST_F(KitProfileTest, TraceHoldsTheZonesToTheNanosecond) {
    { const KitProfileScope zone("quote \" and \\ and \n"); }
    const std::string path = testing::TempDir() + "profile_trace.json";
    ASSERT_TRUE(KitProfileWriteTrace(path.c_str()));
    std::ostringstream read;
    read << std::ifstream(path).rdbuf();
    std::remove(path.c_str());
    const std::string text = read.str();
    const auto zones = zonesNamed("quote \" and \\ and \n");
    ASSERT_EQ(zones.size(), 1U);
    char duration[32];
    const long long ns = zones[0].end - zones[0].start;
    std::snprintf(duration, sizeof duration, "\"dur\":%lld.%03lld", ns / 1000, ns % 1000);
    EXPECT_NE(text.find("\"name\":\"quote \\\" and \\\\ and \\u000a\",\"ts\":0.000,"), text.npos)
        << text;
    EXPECT_NE(text.find(duration), text.npos) << text;
    EXPECT_EQ(text.find("{\"traceEvents\":["), 0U);
    EXPECT_TRUE(bracketsMatch(text)) << text;
}

TEST_F(KitProfileTest, TraceThatCannotBeWrittenIsWarnedOf) {
    const WarningRecorder warnings;
    EXPECT_FALSE(KitProfileWriteTrace("/nowhere/trace.json"));
    EXPECT_FALSE(KitProfileWriteTrace(nullptr));
    EXPECT_EQ(WarningRecorder::take().size(), 2U);
}

} // namespace
