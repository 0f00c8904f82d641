#include <Hy/HyEnum.h>
#include <Hy/HyStringTable.h>
#include "../kit/KitTestSupport.h"
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace Hy {
namespace {
enum Gear { reverse, neutral, drive };
enum Light { red, green };

/// Knows Gear and Light by their names.
class Names : public ReflectionAccessor {
public:
    bool isEnum(const std::type_info* type) override { return textsOf(type) != nullptr; }
    std::string getTypeId(const std::type_info* type) override {
        return *type == typeid(Gear) ? "Gear" : *type == typeid(Light) ? "Light" : "";
    }
    const std::type_info* getType(const std::string& text) override {
        return text == "Gear" ? &typeid(Gear) : text == "Light" ? &typeid(Light) : nullptr;
    }
    std::string getValueString(const std::type_info* type, int value) override {
        const auto* texts = textsOf(type);
        const bool isIn = texts && value >= 0 && value < static_cast<int>(texts->size());
        return isIn ? (*texts)[static_cast<std::size_t>(value)] : "";
    }
    int getValue(const std::type_info* type, const std::string& text) override {
        for (int i = 0; !getValueString(type, i).empty(); ++i)
            if (getValueString(type, i) == text)
                return i;
        return -1;
    }

private:
    static const std::vector<std::string>* textsOf(const std::type_info* type) {
        static const std::vector<std::string> gears = {"reverse", "neutral", "drive"};
        static const std::vector<std::string> lights = {"red", "green"};
        return *type == typeid(Gear) ? &gears : *type == typeid(Light) ? &lights : nullptr;
    }
};

class HyEnumTest : public testing::Test {
protected:
    void SetUp() override { HyEnum::setReflectionAccessor(&names); }
    void TearDown() override { HyEnum::setReflectionAccessor(nullptr); }

    Names names;
    WarningRecorder warnings;
};

using Texts = std::vector<std::string>;

TEST_F(HyEnumTest, IsAPlainNumberWithoutAnAccessor) {
    HyEnum::setReflectionAccessor(nullptr);
    HyEnum value("Gear", drive);
    EXPECT_FALSE(value.fromString("neutral"));
    EXPECT_EQ(value.getValue(), drive);
    EXPECT_TRUE(value.setValue(77));
    EXPECT_EQ(int(value), 77);
    EXPECT_EQ(value.toString(), "");
    EXPECT_EQ(value.getType(), nullptr);
}

TEST_F(HyEnumTest, ConvertsToAndFromText) {
    HyEnum value("Gear", neutral);
    EXPECT_EQ(value.getType(), nullptr); // resolved on use
    EXPECT_EQ(value.toString(), "neutral");
    EXPECT_EQ(value.getType(), &typeid(Gear));
    EXPECT_TRUE(value.fromString("drive"));
    EXPECT_EQ(value.getValue(), drive);
    EXPECT_TRUE(value.setValue(reverse));
    EXPECT_EQ(value.toString(), "reverse");
    EXPECT_EQ(HyEnum(&typeid(Light), green).toString(), "green");
    EXPECT_EQ(HyEnum(&typeid(Light), green).getTypeString(), "Light");
    EXPECT_TRUE(warnings.take().empty());

    EXPECT_TRUE(value.setValue(9)); // true, though not taken
    EXPECT_FALSE(value.fromString("park"));
    EXPECT_EQ(value.getValue(), reverse);
    EXPECT_EQ(value.toString(), "reverse");
    EXPECT_EQ(warnings.take(),
              (Texts{"0: HyEnum::setValue: 9 is not a valid enum value for Gear\n.",
                     "0: HyEnum::fromString: Not found value park for enumeration Gear\n."}));
}

TEST_F(HyEnumTest, AssignsWithinATypeOnly) {
    HyEnum gear("Gear", neutral), light("Light", green);
    gear = light;
    EXPECT_EQ(gear.getValue(), neutral);
    EXPECT_EQ(warnings.take(),
              (Texts{"0: HyEnum::operator=(): Cannot assign a HyEnum of different type."}));

    HyEnum untyped;
    untyped = light; // takes the type too
    EXPECT_EQ(untyped.getType(), &typeid(Light));
    EXPECT_EQ(untyped.toString(), "green");

    gear = HyEnum("", drive); // a number takes this type
    EXPECT_EQ(gear.getType(), &typeid(Gear));
    EXPECT_EQ(gear.toString(), "drive");
    gear = HyEnum("Gear", reverse);
    EXPECT_EQ(gear.toString(), "reverse");
    EXPECT_TRUE(warnings.take().empty());
}

// A text set while the type is known outlives a number that comes by assignment of the unresolved.
TEST_F(HyEnumTest, TextWinsOverTheNumber) {
    HyEnum typed(&typeid(Gear), reverse);
    EXPECT_TRUE(typed.fromString("drive"));
    HyEnum copy("", neutral);
    HyEnum::setReflectionAccessor(nullptr);
    copy = typed; // without a type of its own it takes all of the other
    HyEnum::setReflectionAccessor(&names);
    EXPECT_EQ(copy.toString(), "drive");
    EXPECT_EQ(copy.getValue(), drive);
}

TEST(HyStringTableTest, ReplacesAndFindsByName) {
    const WarningRecorder warnings;
    HyStringTable& table = HyStringTable::instance();
    const std::size_t before = table.size();
    table.add("greeting", "hello");
    table.add("parting", "bye");
    table.add("greeting", "good day");
    EXPECT_EQ(table.size(), before + 2);
    EXPECT_STREQ(table.get("greeting"), "good day");
    for (int i = 0; i < 20; ++i) // across growths of the table
        table.add(("copy" + std::to_string(i)).c_str(), table.get("parting"));
    EXPECT_STREQ(table.get("copy19"), "bye");
    EXPECT_TRUE(warnings.take().empty());

    EXPECT_EQ(table.get("missing"), nullptr);
    EXPECT_EQ(table.get(nullptr), nullptr);
    table.add(nullptr, "x");
    table.add("x", nullptr);
    table.add(std::string(256, 'x').c_str(), "too long");
    table.add(std::string(255, 'x').c_str(), "just fits");
    EXPECT_STREQ(table.get(std::string(255, 'x').c_str()), "just fits");
    EXPECT_EQ(table.size(), before + 23);
    EXPECT_EQ(warnings.take(),
              (Texts{"0: HyStringTable: cannot find 'missing' in the string table.\n",
                     "0: HyStringTable: cannot find '(null)' in the string table.\n",
                     "0: HyStringTable::add: name and text must not be null.\n",
                     "0: HyStringTable::add: name and text must not be null.\n",
                     "0: HyStringTable::add: the name must be shorter than 256 bytes.\n"}));
}
} // namespace
} // namespace Hy
