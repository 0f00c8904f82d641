#include "FrameFixture.h"

#include <Col/ColLineSeg.h>
#include <Col/ColModel.h>
#include <Col/ColSpace.h>
#include <Hy/Hy.h>

#include <map>

using namespace Hy;

namespace {

class Choice : public HyLineSegIntersectSub {
public:
    LineSegAction notify(HyCollisionGeometry* geometry) override {
        const auto found = actions.find(geometry);
        return found == actions.end() ? LineSegIntersect : found->second;
    }
    std::map<HyCollisionGeometry*, LineSegAction> actions;
};

class HyLineSegIntersectSubTest : public FrameFixture {
protected:
    HyCollisionGeometry* add(HyUniverse& universe, HyCollisionGeometry* geometry, HyReal x) {
        geometry->setTransformAbsolute(HyTransform(HyVector3(x, 0, 0)));
        universe.addCollisionGeometry(geometry);
        return geometry;
    }
};

// A subscriber chooses among the geometries of a universe, and among the children of a composite.
TEST_F(HyLineSegIntersectSubTest, ChoosesWhatASegmentMeets) {
    HyUniverse& universe = HyFrame::instance()->getUniverse();
    HyCollisionGeometry* ball = add(universe, new HyCollisionGeometry(new HySphere(1)), 5);
    auto* pair = new HyCompositeCollisionGeometry;
    HyCollisionGeometry* child[2];
    for (int i = 0; i < 2; ++i) {
        child[i] = new HyCollisionGeometry(new HyBox(1, 1, 1), nullptr,
                                           HyTransform(HyVector3(3.0 * i, 0, 0)));
        pair->addCollisionGeometry(child[i]);
    }
    add(universe, pair, 10);
    HyCollisionGeometry* far = add(universe, new HyCollisionGeometry(new HySphere(1)), 20);

    struct Case {
        std::map<HyCollisionGeometry*, HyLineSegIntersectSub::LineSegAction> actions;
        HyCollisionGeometry* hit;
        HyReal distance;
    };
    const auto ignore = HyLineSegIntersectSub::LineSegIgnore;
    const auto stop = HyLineSegIntersectSub::LineSegStop;
    const Case cases[] = {
        {{}, ball, 4},
        {{{ball, ignore}}, child[0], 9.5},
        {{{ball, ignore}, {child[0], ignore}}, child[1], 12.5},
        {{{ball, ignore}, {pair, ignore}}, far, 19},
        {{{ball, stop}, {pair, stop}, {far, stop}}, nullptr, 0},
        {{{child[0], stop}, {child[1], stop}, {ball, ignore}, {far, ignore}}, nullptr, 0},
    };
    for (const Case& c : cases) {
        Choice choice;
        choice.actions = c.actions;
        ColLineSegIntersectResult hit;
        const int found =
            ColSpaceLineSegIntersect(universe.getColSpace(), {}, {30, 0, 0}, &hit, &choice);
        ASSERT_EQ(found != 0, c.hit != nullptr);
        if (!c.hit)
            continue;
        const ColModel* model = hit.subModel ? hit.subModel : hit.model;
        EXPECT_EQ(model->mCollisionGeometry, c.hit);
        EXPECT_NEAR(hit.distance, c.distance, 1e-12);
    }
}

} // namespace
