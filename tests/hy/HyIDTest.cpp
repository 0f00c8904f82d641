#include <Hy/HyID.h>
#include <Hy/HySequentialID.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace Hy {
namespace {

TEST(HyIDTest, ChecksumIsCrc32) {
    const std::string check = "123456789"; // its value is published with the polynomial
    EXPECT_EQ(calculateCRC32(check.data(), check.size(), 0), 0xCBF43926u);
    EXPECT_EQ(HyID(check).asChecksum(), static_cast<int>(0xCBF43926u));
    const std::uint32_t half = calculateCRC32(check.data(), 4, 0);
    EXPECT_EQ(calculateCRC32(check.data() + 4, 5, half), 0xCBF43926u);
    EXPECT_EQ(calculateCRC32(nullptr, 0, 0xDEADBEEFu), 0xDEADBEEFu);
}

TEST(HyIDTest, RegistersEachNumberOnce) {
    MessageCapture messages;
    const std::string first = "plumless", second = "buckeroo"; // of one checksum
    ASSERT_EQ(HyID(first).asChecksum(), HyID(second).asChecksum());
    EXPECT_TRUE(HyID::registerID(HyID(first)));
    EXPECT_FALSE(HyID::registerID(HyID(second)));
    EXPECT_EQ(messages.take(), "HyWarning{0}: HyID " + second +
                                   " is already registered. The application make not work "
                                   "correctly.\n");
    EXPECT_EQ(HyID::getIDName(HyID(second).asChecksum()), first);

    for (const char* text : {"wheel", "arm", "boom", "hull"})
        EXPECT_TRUE(HyID::registerID(HyID(text))) << text;
    const HyArray<HyID>& ids = HyID::getRegisteredIDArray();
    EXPECT_EQ(ids.size(), 5u);
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
    EXPECT_TRUE(HyID::unregisterID(HyID("boom")));
    EXPECT_FALSE(HyID::unregisterID(HyID("boom")));
    EXPECT_FALSE(HyID::isRegistered(HyID("boom")));
    EXPECT_TRUE(HyID::isRegistered(HyID("wheel")));
    EXPECT_TRUE(std::is_sorted(ids.begin(), ids.end()));
    EXPECT_EQ(HyID::getIDName(HyID("boom").asChecksum()), "Unknown ID");
    for (const std::string& text :
         {first, std::string("wheel"), std::string("arm"), std::string("hull")})
        HyID::unregisterID(HyID(text));
    EXPECT_TRUE(ids.empty());
}

TEST(HySequentialIDTest, CountsNamesFromOne) {
    MessageCapture messages;
    EXPECT_EQ(HySequentialID().asString(), "");
    const int before = HySequentialID::getIDCount();
    HySequentialID cable("cable"), rope("rope");
    EXPECT_EQ(int(cable), before);
    EXPECT_EQ(int(rope), before + 1);
    EXPECT_EQ(cable.asString(), "cable");
    EXPECT_TRUE(HySequentialID::exist("rope"));
    EXPECT_FALSE(HySequentialID::exist("chain"));
    EXPECT_EQ(messages.take(), "");

    rope.reset("cable");
    EXPECT_EQ(messages.take(), "HyWarning{0}: Cannot create a sequential ID 'cable'. The name is "
                               "already in use.\n");
    EXPECT_EQ(int(rope), before + 1);
    EXPECT_EQ(int(HySequentialID(nullptr)), 0);
    EXPECT_EQ(messages.take(),
              "HyWarning{0}: Trying to create a sequential ID with a NULL name.\n");
    EXPECT_EQ(HySequentialID::getName(before + 2), "Unknown ID");
    EXPECT_EQ(messages.take(), "HyWarning{0}: Cannot get the name from an unknown ID (" +
                                   std::to_string(before + 2) + ").\n");
    EXPECT_EQ(HySequentialID::getIDCount(), before + 2);
}

} // namespace
} // namespace Hy
