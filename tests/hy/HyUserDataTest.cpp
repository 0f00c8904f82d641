#include <Hy/HyBaseUserData.h>
#include <Hy/HyUserDataContainer.h>

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

namespace Hy {
namespace {

template <class T>
std::string streamed(const T& value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

TEST(HyUserDataTest, ConvertsByType) {
    constexpr HyReal kHuge = std::numeric_limits<HyReal>::max();
    constexpr int kMaxInt = std::numeric_limits<int>::max();
    HyBaseUserData object;
    auto* const part = reinterpret_cast<HyPart*>(&object); // never followed
    void* const nothing = nullptr;
    struct Case {
        HyUserData data;
        bool asBoolean;
        int asInteger;
        HyReal asDouble;
        std::string asString;
    };
    const Case cases[] = {
        {HyUserData("none"), false, 0, 0, ""},
        {HyUserData("bool", true), true, 1, 1, "true"},
        {HyUserData("bool", false), false, 0, 0, "false"},
        {HyUserData("text", "1"), true, 1, 1, "1"},
        {HyUserData("text", "true"), false, 0, 0, "true"},
        {HyUserData("text", "2"), false, 2, 2, "2"},
        {HyUserData("text", " -2.5e1 N"), false, -2, -25, " -2.5e1 N"},
        {HyUserData("text", "99999999999"), false, 0, 99999999999.0, "99999999999"},
        {HyUserData("text", ""), false, 0, 0, ""},
        {HyUserData("int", -7), true, -7, -7, "-7"},
        {HyUserData("real", 2.75), true, 2, 2.75, "2.75"},
        {HyUserData("real", -2.75), true, -2, -2.75, "-2.75"},
        {HyUserData("real", kHuge), true, kMaxInt, kHuge, streamed(kHuge)},
        {HyUserData("vector", HyVector3(1, -2, 0.5)), false, 0, 0, "HyVector3(1 -2 0.5)"},
        {HyUserData("quaternion", HyQuaternion(0, 0, 1, 0)), false, 0, 0, "HyQuaternion(0 0 1 0)"},
        {HyUserData("transform", HyTransform(HyVector3(4, 5, 6))), false, 0, 0,
         "HyTransform(1 0 0 0 0 1 0 0 0 0 1 0 4 5 6 1)"},
        {HyUserData("void", nothing), false, 0, 0, "(void *)" + streamed(nothing)},
        {HyUserData("part", part), true, 0, 0, "(HyPart *)" + streamed(static_cast<void*>(part))},
        {HyUserData("base", &object), true, 0, 0,
         "(HyBase *)" + streamed(static_cast<void*>(&object))},
    };
    for (const Case& c : cases) {
        const std::string what = c.data.getName() + " " + c.asString;
        EXPECT_EQ(c.data.asBoolean(), c.asBoolean) << what;
        EXPECT_EQ(c.data.asInteger(), c.asInteger) << what;
        EXPECT_EQ(c.data.asDouble(), c.asDouble) << what;
        EXPECT_EQ(c.data.asString(), c.asString) << what;
    }
    EXPECT_EQ(HyUserData("nan", std::numeric_limits<HyReal>::quiet_NaN()).asInteger(), 0);
}

TEST(HyUserDataTest, HoldsOneTypeAtATime) {
    HyBaseUserData object;
    HyUserData data("gauge", 5);
    EXPECT_EQ(data.getType(), HyUserData::ValueInteger);
    EXPECT_FALSE(data.getValueBoolean());
    data.setPointerHyBase(&object);
    EXPECT_EQ(data.getPointerHyBase(), &object);
    EXPECT_EQ(data.getValue<HyBase*>(), &object);
    EXPECT_EQ(data.getPointerHyPart(), nullptr);
    EXPECT_EQ(data.getValueInteger(), 0);
    data.setValueString("text");
    data.setValueString(data.asString() + "s");
    EXPECT_EQ(data.getValue<std::string>(), "texts");
    data.clearValue();
    EXPECT_FALSE(data.hasValue());
    EXPECT_EQ(data.getName(), "gauge");
    EXPECT_EQ(data.getValueString(), "");
    EXPECT_TRUE(data.getValueHyTransform() == HyTransform::kIdentity);
    EXPECT_EQ(data.getValueHyQuaternion()[0], 1);
}

TEST(HyUserDataContainerTest, KeepsOneValueAName) {
    HyBaseUserData object;
    const HyBaseUserData& constant = object;
    EXPECT_TRUE(constant.userData().getData().empty());
    HyUserDataContainer& data = object.userData();
    data.setData(HyUserData("b", 1));
    data.setData(HyUserData("a", "first"));
    data.setData(HyUserData("b", 2));
    data.setData(data.getData("a"));
    EXPECT_EQ(constant.userData().getData().size(), 2u);
    EXPECT_EQ(data.getData().begin()->getName(), "a");
    EXPECT_EQ(data.getValue<int>("b"), 2);
    EXPECT_EQ(data.getValue<std::string>("a"), "first");

    const HyUserDataContainer copy(data);
    EXPECT_TRUE(data.removeData("b"));
    EXPECT_FALSE(data.removeData("b"));
    EXPECT_FALSE(data.hasData("b"));
    EXPECT_EQ(data.getData("b").getType(), HyUserData::None);
    EXPECT_TRUE(copy.hasData("b"));
    data.setData(copy.getData());
    EXPECT_TRUE(data.hasData("b"));
}

} // namespace
} // namespace Hy
