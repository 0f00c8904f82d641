#include <Hy/HyContactMaterial.h>
#include <Hy/HyContactProperties.h>
#include <Hy/HyMaterial.h>
#include <Hy/HyTireModelParams.h>

#include "MessageCapture.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <limits>

namespace Hy {
namespace {

constexpr HyReal kNaN = std::numeric_limits<HyReal>::quiet_NaN();
constexpr HyReal kInfinity = std::numeric_limits<HyReal>::infinity();
constexpr HyReal kLargest = std::numeric_limits<HyReal>::max();

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct Tire : HyTireModelParams {
    explicit Tire(int tireWidth) : width(tireWidth) { ++count; }
    Tire(const Tire& other) : HyTireModelParams(other), width(other.width) { ++count; }
    ~Tire() override { --count; }
    [[nodiscard]] HyTireModelParams* clone() const override { return new Tire(*this); }
    int width;
    static inline int count = 0;
};

int widthOf(const HyTireModelParams* params) {
    return params ? static_cast<const Tire*>(params)->width : 0;
}

TEST(HyMaterialTest, RefusesWhatNoSurfaceHas) {
    MessageCapture capture;
    HyContactMaterial material;
    const auto axis = HyMaterialBase::kFrictionAxisLinearSecondary;
    struct Setter {
        const char* name;
        std::function<void(HyReal)> set;
        std::function<HyReal()> get;
        bool mayBeNegative;
    };
    const Setter setters[] = {
        {"setRestitution", [&](HyReal v) { material.setRestitution(v); },
         [&] { return material.getRestitution(); }, false},
        {"setVelThreshold", [&](HyReal v) { material.setVelThreshold(v); },
         [&] { return material.getVelThreshold(); }, false},
        {"setCompliance", [&](HyReal v) { material.setCompliance(v); },
         [&] { return material.getCompliance(); }, false},
        {"setDamping", [&](HyReal v) { material.setDamping(v); },
         [&] { return material.getDamping(); }, false},
        {"setMaxAdhesiveForce", [&](HyReal v) { material.setMaxAdhesiveForce(v); },
         [&] { return material.getMaxAdhesiveForce(); }, false},
        {"setBoxFrictionForce", [&](HyReal v) { material.setBoxFrictionForce(axis, v); },
         [&] { return material.getBoxFrictionForce(axis); }, false},
        {"setFrictionCoefficient", [&](HyReal v) { material.setFrictionCoefficient(axis, v); },
         [&] { return material.getFrictionCoefficient(axis); }, false},
        {"setSlip", [&](HyReal v) { material.setSlip(axis, v); },
         [&] { return material.getSlip(axis); }, false},
        {"setSlide", [&](HyReal v) { material.setSlide(axis, v); },
         [&] { return material.getSlide(axis); }, true},
        {"setStaticFrictionScale", [&](HyReal v) { material.setStaticFrictionScale(axis, v); },
         [&] { return material.getStaticFrictionScale(axis); }, false},
        {"setRollingResistanceBaseCoeff",
         [&](HyReal v) { material.setRollingResistanceBaseCoeff(v); },
         [&] { return material.getRollingResistanceBaseCoeff(); }, false},
        {"setRollingResistanceSpeedFactor",
         [&](HyReal v) { material.setRollingResistanceSpeedFactor(v); },
         [&] { return material.getRollingResistanceSpeedFactor(); }, true},
        {"setRollingResistanceNominalPressure",
         [&](HyReal v) { material.setRollingResistanceNominalPressure(v); },
         [&] { return material.getRollingResistanceNominalPressure(); }, false},
    };
    for (const Setter& setter : setters) {
        setter.set(kLargest);
        EXPECT_EQ(setter.get(), kLargest) << setter.name;
        setter.set(0.25);
        EXPECT_EQ(capture.take(), "") << setter.name;
        material.setLocked(false);
        for (HyReal bad : {kNaN, kInfinity, -kInfinity}) {
            setter.set(bad);
            EXPECT_EQ(setter.get(), 0.25) << setter.name << ' ' << bad;
            EXPECT_NE(capture.take().find(setter.name), std::string::npos) << bad;
        }
        EXPECT_FALSE(material.isLocked()) << setter.name; // nothing was edited
        setter.set(-0.5);
        EXPECT_EQ(setter.get(), setter.mayBeNegative ? -0.5 : 0.25) << setter.name;
        EXPECT_EQ(capture.take().empty(), setter.mayBeNegative) << setter.name;
    }
}

TEST(HyMaterialTest, AxesAndOptionsFollowTheirSetters) {
    HyMaterial material;
    material.setSlide(HyMaterialBase::kFrictionAxisLinear, -3);
    material.setSlide(HyMaterialBase::kFrictionAxisLinearSecondary, 2);
    material.setSlide(HyMaterialBase::kFrictionAxisAngularSecondary, 1);
    for (int outside : {-1, 5, 7, 1000}) {
        const auto axis = static_cast<HyMaterialBase::FrictionAxis>(outside);
        material.setSlide(axis, 100);
        material.setFrictionModel(axis, HyMaterialBase::kFrictionModelBox);
        EXPECT_EQ(material.getStaticFrictionScale(axis), 1);
        EXPECT_EQ(material.getFrictionModel(axis), HyMaterialBase::kFrictionModelNone);
    }
    const HyReal expected[5] = {-3, 2, 0, 0, 1};
    for (int axis = 0; axis < 5; ++axis) {
        EXPECT_EQ(material.getValue().slide[axis], expected[axis]);
        EXPECT_EQ(material.getValue().model[axis], HyMaterialBase::kFrictionModelNone);
    }

    // Softness is in use exactly while compliance or damping is not zero.
    material.setCompliance(1e-5);
    material.setDamping(10);
    material.setCompliance(0);
    EXPECT_EQ(material.getValue().options, 4);
    material.setDamping(0);
    EXPECT_EQ(material.getValue().options, 0);

    MessageCapture capture;
    material.setFrictionModel(HyMaterialBase::kFrictionAxisLinear,
                              static_cast<HyMaterialBase::FrictionModel>(7));
    EXPECT_EQ(material.getFrictionModel(HyMaterialBase::kFrictionAxisLinear),
              HyMaterialBase::kFrictionModelNone);
    EXPECT_NE(capture.take(), "");
}

TEST(HyMaterialTest, UsersThatAreGoneDoNotCount) {
    HyMaterial material;
    auto* user = new HyBase;
    HyBase other;
    material.registerUsage(nullptr);
    material.registerUsage(user);
    material.registerUsage(&other);
    material.registerUsage(&other);
    material.unregisterUsage(&other);
    ASSERT_EQ(material.getUsageReferenceList().size(), 2U);
    delete user;
    EXPECT_TRUE(material.getUsageReferenceList()[0].isNull());
    material.registerUsage(&material);
    ASSERT_EQ(material.getUsageReferenceList().size(), 2U);
    EXPECT_EQ(material.getUsageReferenceList()[0].get(), &other);
}

TEST(HyMaterialTest, RollingResistanceFollowsItsFormulas) {
    HyContactMaterial pair;
    pair.setRollingResistanceBaseCoeff(0.01);
    pair.setRollingResistanceSpeedFactor(0.002);
    pair.setRollingResistanceSpeedFactorPressureModel(0.0001);
    const auto at = [&](HyReal v, HyReal p, HyReal f) {
        return pair.getRollingResistanceCoefficient(v, p, f);
    };
    EXPECT_DOUBLE_EQ(at(10, 1, 1), 0.01 + 0.002 * 100); // second order at the start
    pair.setRollingResistanceCoeffType(kFirstOrderFormula);
    EXPECT_DOUBLE_EQ(at(10, 1, 1), 0.03);

    // SAE J2452: c = (a + b v + c v²) (p/p₀)^α F^(β − 1)
    pair.setRollingResistanceCoeffType(kPressureModel);
    pair.setRollingResistancePressureExponent(-0.5);
    EXPECT_DOUBLE_EQ(at(10, 330000, 5000), 0.04);
    EXPECT_DOUBLE_EQ(at(10, 4 * 330000, 5000), 0.02);
    EXPECT_DOUBLE_EQ(at(10, 0, 5000), 0.04);
    pair.setRollingResistanceNormalForceExponent(1.5);
    EXPECT_DOUBLE_EQ(at(10, 4 * 330000, 10000), 2);
    EXPECT_DOUBLE_EQ(pair.getRollingResistanceCoefficient(10), 0.04);
    EXPECT_EQ(at(10, 330000, 0), 0);
    EXPECT_EQ(at(10, 330000, -1), 0);
    pair.setRollingResistanceNormalForceExponent(0.5);
    EXPECT_DOUBLE_EQ(at(10, 330000, 0), 0.04); // a power without bound is left out
    pair.setRollingResistanceNominalPressure(0);
    EXPECT_DOUBLE_EQ(at(10, 99, 4), 0.02);

    MessageCapture capture;
    EXPECT_EQ(at(kNaN, 1, 1), 0);
    EXPECT_EQ(at(1, kInfinity, 1), 0);
    EXPECT_NE(capture.take(), "");
}

TEST(HyMaterialTest, RollingResistanceTableHoldsItsEnds) {
    MessageCapture capture;
    HyContactMaterial pair;
    pair.setRollingResistanceCoeffType(kTable);
    EXPECT_EQ(pair.getRollingResistanceCoefficient(1), 0);
    EXPECT_NE(capture.take().find("empty"), std::string::npos);

    const HyReal x[] = {1, 2, 2, 4}, y[] = {10, 20, 40, 0};
    pair.setRollingResistanceCoeffTable(4, x, y);
    const HyReal expected[][2] = {{-5, 10}, {1, 10}, {1.5, 15}, {2, 40}, {3, 20}, {4, 0}, {9, 0}};
    for (const auto& [speed, coefficient] : expected)
        EXPECT_DOUBLE_EQ(pair.getRollingResistanceCoefficient(speed), coefficient) << speed;

    const HyReal descending[] = {2, 1}, broken[] = {0, kNaN};
    pair.setLocked(false);
    pair.setRollingResistanceCoeffTable(2, descending, y);
    pair.setRollingResistanceCoeffTable(2, x, broken);
    pair.setRollingResistanceCoeffTable(2, nullptr, y);
    pair.setRollingResistanceCoeffTable(-1, x, y);
    EXPECT_NE(capture.take(), "");
    EXPECT_FALSE(pair.isLocked());
    EXPECT_DOUBLE_EQ(pair.getRollingResistanceCoefficient(3), 20);
    // Its own points shall do as an argument.
    const HyTable1D& table = pair.getRollingResistanceCoeffTable();
    pair.setRollingResistanceCoeffTable(2, table.getX().data() + 2, table.getY().data() + 2);
    EXPECT_EQ(table.size(), 2);
    EXPECT_DOUBLE_EQ(pair.getRollingResistanceCoefficient(0), 40);
    pair.setRollingResistanceCoeffTable(0, nullptr, nullptr);
    EXPECT_EQ(table.size(), 0);
}

TEST(HyMaterialTest, ContactMaterialOwnsItsTireModel) {
    {
        HyContactMaterial pair, other;
        {
            const Tire tire(7);
            pair.setTireModelParams(&tire);
        }
        EXPECT_EQ(widthOf(pair.getTireModelParams()), 7);
        EXPECT_TRUE(pair.isLocked());
        const HyTireModelParams* const kept = pair.getTireModelParams();
        pair.setTireModelParams(kept);
        pair = *&pair;
        EXPECT_EQ(pair.getTireModelParams(), kept);

        other.copyAllInternal(pair);
        EXPECT_EQ(other.getTireModelParams(), nullptr);
        EXPECT_FALSE(other.isLocked());
        other = pair;
        EXPECT_EQ(widthOf(other.getTireModelParams()), 7);
        EXPECT_NE(other.getTireModelParams(), kept);
        EXPECT_TRUE(other.isLocked());
        pair.setTireModelParams(nullptr);
        EXPECT_EQ(pair.getTireModelParams(), nullptr);
        EXPECT_EQ(Tire::count, 1);
    }
    EXPECT_EQ(Tire::count, 0);
}

TEST(HyMaterialTest, ContactMaterialOutlivesItsMaterials) {
    HyMaterial first;
    first.setRestitution(0.5);
    auto* second = new HyMaterial;
    HyContactMaterial pair(&first, second);
    delete second;
    first.setRestitution(0.25);
    EXPECT_EQ(pair.getRestitution(), 0); // as merged when both were there
    EXPECT_EQ(pair.getSourceMaterial2(), nullptr);
    pair.setLocked(true);
    pair.setLocked(false);
    EXPECT_EQ(pair.getSourceMaterial1(), &first);
}

TEST(HyMaterialTest, DumpIsReadable) {
    HyMaterial material;
    using Base = HyMaterialBase;
    material.setFrictionModel(Base::kFrictionAxisLinearPrimary, Base::kFrictionModelBox);
    material.setBoxFrictionForce(Base::kFrictionAxisLinearPrimary, 12.5);
    material.setFrictionModel(Base::kFrictionAxisLinearSecondary,
                              Base::kFrictionModelBoxProportionalLow);
    material.setFrictionModel(Base::kFrictionAxisAngularNormal, Base::kFrictionModelScaledBoxFast);
    material.setFrictionCoefficient(Base::kFrictionAxisAngularNormal, 0.7);
    material.setFrictionModel(Base::kFrictionAxisAngularPrimary, Base::kFrictionModelNeutral);
    material.setDamping(1e7);
    material.setIntegratedSlipDisplacement(HyMaterial::kIntegratedSlipDisplacementNever);
    const auto path = std::filesystem::temp_directory_path() / "HyMaterialTest.txt";
    const std::string numbers = "Axis kFrictionAxisLinearPrimary: Friction Model Box\n"
                                "   max force                        12.5\n"
                                "   slip                                  0\n"
                                "   slide                                 0\n"
                                "   static friction scale                 1\n"
                                "Axis kFrictionAxisLinearSecondary: Friction Model Box "
                                "proportional Low\n"
                                "   max accel                           0\n"
                                "   slip                                  0\n"
                                "   slide                                 0\n"
                                "   static friction scale                 1\n"
                                "Axis kFrictionAxisAngularNormal: Friction Model Scaled Box Fast\n"
                                "   coefficient                        0.7\n"
                                "   slip                                  0\n"
                                "   slide                                 0\n"
                                "   static friction scale                 1\n"
                                "restitution                              0\n"
                                "velThreshold                         0.001\n"
                                "compliance                               0\n"
                                "damping                              1e+07\n"
                                "max_adhesive_force                       0\n"
                                "options                                  4\n";
    material.dump(path.c_str());
    EXPECT_EQ(contentOf(path), numbers + "integrated displacement: \t Never \n");

    HyContactMaterial pair(&material, &material);
    const Tire tire(1);
    pair.setTireModelParams(&tire);
    pair.setAutomaticLocking(false);
    pair.dump(path.c_str());
    EXPECT_EQ(contentOf(path), numbers + "This material is : Locked\n"
                                         "This material is : Not Automat Locking\n"
                                         "Integrated Slip Displacement : Not Activated\n"
                                         "This material has a tire model\n");
    std::filesystem::remove(path);
}

// The older form.

TEST(HyMaterialTest, PropertiesEditWhatTheyShow) {
    auto pair = std::make_unique<HyContactMaterial>();
    HyContactProperties view(pair.get());
    view.setSlip(0.5);
    view.setSecondarySlide(-1);
    view.setPrimaryFrictionModel(HyContactProperties::kFrictionModelScaledBox);
    EXPECT_TRUE(pair->isLocked());
    EXPECT_EQ(pair->getSlip(HyMaterialBase::kFrictionAxisLinearSecondary), 0.5);
    EXPECT_EQ(pair->getSlide(HyMaterialBase::kFrictionAxisLinearSecondary), -1);
    EXPECT_EQ(pair->getSlide(HyMaterialBase::kFrictionAxisLinearPrimary), 0);
    EXPECT_EQ(view.getPrimaryFrictionModel(), HyContactProperties::kFrictionModelScaledBox);
    EXPECT_EQ(view.getSecondaryFrictionModel(), HyContactProperties::kFrictionModelUnknown);
    pair->setLocked(false);

    MessageCapture capture;
    view.setSlip(-1);
    EXPECT_FALSE(pair->isLocked());
    EXPECT_EQ(view.getPrimarySlip(), 0.5);
    pair.reset();
    capture.take();
    view.setSlip(1);
    EXPECT_EQ(view.getPrimarySlip(), 0);
    EXPECT_EQ(view.getProxyContact(), nullptr);
    EXPECT_NE(capture.take(), "");

    DyncContactMaterial ofContact;
    HyContactProperties contactView(&ofContact);
    contactView.setDamping(3);
    EXPECT_EQ(ofContact.damping, 3);
    EXPECT_EQ(ofContact.options, 4);
}

TEST(HyMaterialTest, FrictionTypeIsTheLinearAxesThatHaveAModel) {
    using Values = DyncContactMaterial;
    const auto none = Values::kFrictionModelNone, box = Values::kFrictionModelBox,
               scaled = Values::kFrictionModelScaledBox;
    struct Case {
        HyContactProperties::FrictionType type;
        Values::FrictionModel before[2], after[2];
    };
    const Case cases[] = {
        {HyContactProperties::kFrictionTypeNone, {scaled, box}, {none, none}},
        {HyContactProperties::kFrictionTypeOneDirection, {scaled, scaled}, {scaled, none}},
        {HyContactProperties::kFrictionTypeOneDirection, {none, scaled}, {box, none}},
        {HyContactProperties::kFrictionTypeTwoDirection, {none, scaled}, {box, scaled}},
        {HyContactProperties::kFrictionTypeTwoDirection, {scaled, none}, {scaled, box}},
    };
    for (const Case& c : cases) {
        Values values;
        for (Values::FrictionModel& model : values.model)
            model = scaled;
        std::copy_n(c.before, 2, values.model);
        HyContactProperties view(&values);
        view.setFrictionType(c.type);
        EXPECT_EQ(view.getFrictionType(), c.type);
        const Values::FrictionModel after[5] = {c.after[0], c.after[1], none, none, none};
        EXPECT_TRUE(std::equal(after, after + 5, values.model)) << c.type;
    }
    MessageCapture capture;
    HyContactProperties own;
    own.setSecondaryFrictionModel(HyContactProperties::kFrictionModelBox);
    EXPECT_EQ(own.getFrictionType(), HyContactProperties::kFrictionTypeOneDirection);
    EXPECT_NE(capture.take().find("HyContactProperties::getFrictionType: The one direction is "
                                  "along the secondary axis\n"),
              std::string::npos);
    own.setFrictionType(HyContactProperties::kFrictionTypeUnknown);
    EXPECT_NE(capture.take(), "");
    EXPECT_EQ(own.getSecondaryFrictionModel(), HyContactProperties::kFrictionModelBox);
}

} // namespace
} // namespace Hy
