#include <Hy/HyCollisionContact.h>

#include <Col/ColContact.h>
#include <Col/ColModel.h>

#include "MessageCapture.h"

#include <gtest/gtest.h>

#include <limits>

namespace Hy {
namespace {

// Two surfaces overlap by 0.25 m along z; the stored point lies on that of surfaceIndex, or midway.
TEST(HyCollisionContactTest, PointLiesOnTheSurfaceThatIsAskedFor) {
    struct Case {
        std::int16_t surface;
        HyReal z[2]; ///< on geometry 1, on geometry 2; the stored z is 1
    };
    for (const Case& c : {Case{kColSurfaceModel1, {1, 1.25}}, Case{kColSurfaceModel2, {0.75, 1}},
                          Case{kColSurfaceNone, {1, 1}}}) {
        ColContact record;
        record.position = lsVec3(3, 4, 1);
        record.normal = lsVec3(0, 0, 1);
        record.separation = -0.25;
        record.surfaceIndex = c.surface;
        const HyCollisionContact contact(&record, nullptr, nullptr);
        for (int side : {0, 1}) {
            HyVector3 point;
            contact.getPosition(point, side);
            EXPECT_EQ(point, HyVector3(3, 4, c.z[side])) << c.surface << ' ' << side;
        }
        EXPECT_EQ(contact.getSurfaceIndex(), c.surface == kColSurfaceNone ? 0xFFFF : c.surface);
    }
}

TEST(HyCollisionContactTest, ShowsAndEditsTheRecord) {
    ColContact record;
    record.dims = 0x0201;
    record.indexElement1 = 5;
    record.indexElement2 = 6;
    ColModel model;
    int token = 0; // only its address counts
    model.mCollisionGeometry = reinterpret_cast<HyCollisionGeometry*>(&token);
    record.model2 = &model;
    HyCollisionContact contact(&record, nullptr, nullptr);
    int first = 0, second = 0;
    contact.getDimensions(first, second);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    record.dims = static_cast<std::int16_t>(0x8182);
    contact.getDimensions(first, second);
    EXPECT_EQ(first, 0x82);
    EXPECT_EQ(second, 0x81);
    contact.getIndices(first, second);
    EXPECT_EQ(first, 5);
    EXPECT_EQ(second, 6);
    EXPECT_EQ(contact.getCollisionGeometry1(), nullptr);
    EXPECT_EQ(contact.getCollisionGeometry2(), model.mCollisionGeometry);
    contact.setPenetration(0.5);
    EXPECT_EQ(record.separation, -0.5);
    MessageCapture capture;
    contact.setPenetration(std::numeric_limits<HyReal>::quiet_NaN());
    EXPECT_EQ(contact.getPenetration(), 0.5);
    EXPECT_NE(capture.take(), "");
}

} // namespace
} // namespace Hy
