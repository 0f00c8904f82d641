#include "FrameFixture.h"

#include <Col/ColIntersectResult.h>
#include <Col/ColModel.h>
#include <Col/ColModelPair.h>
#include <Col/ColRequest.h>
#include <Dyn/DynContact.h>
#include <Hy/Hy.h>

#include <algorithm>
#include <array>

using namespace Hy;

namespace {

class HyDynamicsContactGroupsTest : public FrameFixture {
protected:
    void SetUp() override {
        FrameFixture::SetUp();
        HyUniverse& universe = frame->getUniverse();
        auto* part = new HyPart(1);
        universe.addPart(part);
        part->preStep();
        // A grid of nine points on a floor, and four up a wall.
        for (int i = 0; i < 13; ++i) {
            const bool wall = i >= 9;
            const HyVector3 at = wall ? HyVector3(-1, i % 2, 1 + (i - 9) / 2)
                                      : HyVector3(i % 3, static_cast<HyReal>(i / 3), 0);
            contacts.push_back(universe.createUserDynamicsContact(
                part, nullptr, nullptr, at, wall ? HyVector3(1, 0, 0) : HyVector3(0, 0, 1),
                0.01 + 1e-4 * i));
            if (i > 0)
                DynContactSetNext(contacts[contacts.size() - 2]->getDynContact(),
                                  contacts.back()->getDynContact());
        }
        ColRequestInit(&request);
        ColRequestInit(&own);
        own.contactMaxCount = 1;
        ColModelPairReset(&pair, &model1, &model2);
        pair.request = &own;
        result.pair = &pair;
        result.contacts = room.data();
        result.contactMaxCount = static_cast<int>(room.size());
    }
    [[nodiscard]] std::vector<int> enabled() const {
        std::vector<int> indices;
        for (std::size_t i = 0; i < contacts.size(); ++i)
            if (contacts[i]->isEnabled())
                indices.push_back(static_cast<int>(i));
        return indices;
    }
    void recompute(ColRequest* by) {
        HyDynamicsContactInput(contacts.front()->getDynContact())
            .recomputeContactGroups(&result, by);
    }

    std::vector<HyDynamicsContact*> contacts;
    ColModel model1, model2;
    ColModelPair pair;
    ColRequest request, own;
    ColIntersectResult result;
    std::array<ColContact, 20> room;
};

} // namespace

TEST_F(HyDynamicsContactGroupsTest, KeepsTheOutlineOfEachNormal) {
    recompute(&request);
    EXPECT_EQ(pair.request, &own) << "put back";
    int floor = 0, wall = 0;
    for (const int i : enabled()) {
        (i < 9 ? floor : wall) += 1;
        EXPECT_EQ(contacts[static_cast<std::size_t>(i)]->getGroupIndex(), i < 9 ? 0 : 1);
        EXPECT_EQ(contacts[static_cast<std::size_t>(i)]->getSurface(), 1);
        EXPECT_NEAR(contacts[static_cast<std::size_t>(i)]->getPenetration(), 0.01 + 1e-4 * i,
                    1e-15);
    }
    EXPECT_EQ(floor, 4);
    EXPECT_EQ(wall, 4);
    EXPECT_TRUE(contacts[8]->isEnabled()) << "the deepest";
    EXPECT_FALSE(contacts[4]->isEnabled()) << "inside the outline";
}

TEST_F(HyDynamicsContactGroupsTest, TakesThePairsRequestWithoutAnother) {
    recompute(nullptr);
    EXPECT_EQ(enabled(), (std::vector<int>{8, 12})) << "the deepest of each normal";
}

TEST_F(HyDynamicsContactGroupsTest, NoGroupsLeaveContactsInNone) {
    request.groupMaxCount = 0;
    recompute(&request);
    EXPECT_EQ(enabled().size(), 4U);
    EXPECT_EQ(contacts[static_cast<std::size_t>(enabled()[0])]->getGroupIndex(), -1);
}

TEST_F(HyDynamicsContactGroupsTest, WithoutEnabledContactsNothingHappens) {
    for (HyDynamicsContact* contact : contacts)
        contact->enableContact(false);
    result.contactCount = 3;
    recompute(&request);
    EXPECT_EQ(result.contactCount, 3);
    EXPECT_TRUE(enabled().empty());
    recompute(nullptr);
    result.pair = nullptr;
    recompute(nullptr);
    EXPECT_EQ(warnings().size(), 1U);
}
