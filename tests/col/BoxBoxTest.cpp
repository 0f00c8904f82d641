#include "../../Col/src/math/BoxAxes.h"
#include "PairFixture.h"
#include "support/HeapCounter.h"

#include <algorithm>
#include <cstring>

namespace {

struct Boxes {
    lsVec3 r1, r2;
    lsTransform t12;
};

class BoxBoxTest : public PairTest {
protected:
    /// Boxes near their touch: turned anyhow, a little, or not at all, where axes tie.
    Boxes randomBoxes(int round) {
        Boxes boxes;
        boxes.r1 = lsVec3(uniform(0.1, 1), uniform(0.1, 1), uniform(0.1, 1));
        boxes.r2 = round % 5 == 0 ? boxes.r1 : lsVec3(uniform(0.1, 1), uniform(0.1, 1), 0.5);
        if (round % 3 == 0)
            boxes.t12 = randomRotation();
        else if (round % 3 == 1)
            boxes.t12 = placed(round % 7 % 3, uniform(-1e-6, 1e-6), lsVec3());
        boxes.t12.t() = uniform(0.2, 2) * randomUnit();
        return boxes;
    }
};

/// Separation along a direction in the frame of box 1.
KitReal separationAlong(const Boxes& boxes, const lsVec3& n) {
    KitReal extent = 0;
    for (int i = 0; i < 3; ++i)
        extent += std::abs(n[i]) * boxes.r1[i] + std::abs(n.dot(boxes.t12.axis(i))) * boxes.r2[i];
    return std::abs(n.dot(boxes.t12.t())) - extent;
}

/// The greatest over the fifteen axes by their definition.
KitReal greatestSeparation(const Boxes& boxes) {
    KitReal best = -kKitInfinity;
    for (int i = 0; i < 3; ++i) {
        lsVec3 axis;
        axis[i] = 1;
        best = std::max(
            {best, separationAlong(boxes, axis), separationAlong(boxes, boxes.t12.axis(i))});
        for (int j = 0; j < 3; ++j) {
            lsVec3 cross = axis.cross(boxes.t12.axis(j));
            if (cross.square_norm() <= kBoxParallelSquareSine)
                continue;
            cross.normalize();
            best = std::max(best, separationAlong(boxes, cross));
        }
    }
    return best;
}

bool sameBits(KitReal a, KitReal b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

} // namespace

// All instruction sets agree with each other to the bit and with the axes' definition but for rounding
// and the advantage that faces have.
TEST_F(BoxBoxTest, KernelsFindTheGreatestSeparationWithTheSameBits) {
    constexpr KitReal kEps = 0.002; // m
    int apart = 0, edges = 0;
    for (int round = 0; round < 20000; ++round) {
        const Boxes b = randomBoxes(round);
        BoxAxis first;
        const bool overlap = BoxAxesKernels()[0](&first, kEps, b.r1, b.r2, b.t12);
        for (const BoxAxesKernel kernel : BoxAxesKernels()) {
            BoxAxis axis;
            ASSERT_EQ(kernel(&axis, kEps, b.r1, b.r2, b.t12), overlap) << round;
            ASSERT_TRUE(sameBits(axis.separation, first.separation)) << round;
            ASSERT_EQ(axis.code, first.code) << round;
        }
        const KitReal greatest = greatestSeparation(b);
        if (overlap) {
            ASSERT_NEAR(first.separation, greatest, 1e-6 * std::abs(greatest) + 1e-12) << round;
            ASSERT_LE(first.separation, std::sqrt(10.0) * kEps);
            edges += first.code < kOverlapFace1 && (first.code & 3) != 3;
            for (int code = 0; code < 15; ++code) {
                ASSERT_FALSE(OverlapAxisSeparates(code, kEps, b.r1, b.r2, b.t12))
                    << round << " " << code;
            }
        } else {
            ASSERT_GT(greatest, kEps);
            ASSERT_TRUE(OverlapAxisSeparates(first.code, kEps, b.r1, b.r2, b.t12)) << round;
            ++apart;
        }
    }
    EXPECT_GT(apart, 2000);
    EXPECT_GT(edges, 200);
    BoxAxis axis;
    lsTransform broken;
    broken.row[0][0] = broken.row[1][1] = broken.t()[2] = std::nan("");
    broken.t()[0] = broken.t()[1] = std::nan("");
    broken.row[2][2] = std::nan("");
    for (const BoxAxesKernel kernel : BoxAxesKernels())
        EXPECT_FALSE(kernel(&axis, 0, lsVec3(1, 1, 1), lsVec3(1, 1, 1), broken));
}

// A pair that has seen all poses before answers as a new one does.
TEST_F(BoxBoxTest, WhatAPairRemembersChangesNoAnswer) {
    Body lower(ColBoxCreate(1, 0.7, 0.4)), upper(ColBoxCreate(0.5, 0.6, 0.9));
    Hit old(lower, upper);
    int apart = 0;
    for (int round = 0; round < 3000; ++round) {
        if (round % 4 == 0)
            upper.frame = randomRotation();
        upper.frame.t() = uniform(0.3, 1.2) * randomUnit();
        ColIntersect(&old.pair, &old.result);
        const Hit fresh(lower, upper);
        ASSERT_EQ(old.result.touch, fresh.result.touch) << round;
        ASSERT_EQ(old.result.contactCount, fresh.result.contactCount) << round;
        for (int i = 0; i < fresh.result.contactCount; ++i) {
            ASSERT_TRUE(sameBits(old.contacts[i].separation, fresh.contacts[i].separation));
            for (int k = 0; k < 3; ++k)
                ASSERT_TRUE(sameBits(old.contacts[i].position[k], fresh.contacts[i].position[k]));
        }
        apart += fresh.result.touch == 0;
    }
    EXPECT_GT(apart, 500);
    EXPECT_LT(apart, 2500);
    ColGoodbye(&old.pair);
    EXPECT_EQ(old.pair.m_cachedData, nullptr);
}

TEST_F(BoxBoxTest, GeneratorsMakeNoHeapCall) {
    HeapCounter::watchMemoryTable(true);
    std::vector<std::unique_ptr<Body>> bodies;
    for (int side = 0; side < 2; ++side)
        for (ColGeometry* shape : std::initializer_list<ColGeometry*>{
                 ColSphereCreate(0.5), ColBoxCreate(1, 1, 1), ColCapsuleCreate(0.3, 0.6),
                 ColCylinderCreate(0.5, 1), ColConeCreatePointed(0.5, 1), ColPlaneCreate()})
            bodies.push_back(std::make_unique<Body>(shape));
    std::vector<std::unique_ptr<Hit>> hits;
    for (std::size_t i = 0; i < 6; ++i)
        for (std::size_t j = 6; j < 12; ++j)
            hits.push_back(std::make_unique<Hit>(*bodies[i], *bodies[j])); // makes the scratch
    const auto intersectAll = [&] {
        int contacts = 0;
        for (int round = 0; round < 50; ++round) {
            const lsTransform turned = randomRotation();
            for (std::size_t j = 6; j < 12; ++j) {
                bodies[j]->frame = turned;
                bodies[j]->frame.t() = lsVec3(0.1, 0.2, 0.05 * (round % 20));
            }
            for (const auto& hit : hits) {
                ColIntersect(&hit->pair, &hit->result);
                contacts += hit->result.contactCount;
            }
        }
        return contacts;
    };
    ASSERT_GT(HeapCounter::calls(), 0) << "the counter counts";
    EXPECT_GT(intersectAll(), 1000);
    const long before = HeapCounter::calls();
    intersectAll();
    EXPECT_EQ(HeapCounter::calls() - before, 0);
    HeapCounter::watchMemoryTable(false);
}

// Flat contacts are chosen before they are made. A cosine of normals as good as 1 asks for the road by
// the reduction of made contacts, which must choose the same.
TEST_F(BoxBoxTest, FlatContactsAreThoseOfTheReduction) {
    std::printf("seed 20261\n");
    int several = 0;
    for (int round = 0; round < 3000; ++round) {
        const lsVec3 size(uniform(0.2, 2), uniform(0.2, 2), uniform(0.2, 2));
        lsTransform lean = placed(round % 2, uniform(-0.1, 0.1), lsVec3());
        lsTransform world = randomRotation(), pose;
        world.t() = lsVec3(uniform(-5, 5), uniform(-5, 5), uniform(-5, 5));
        lean.t() = lsVec3(uniform(-0.5, 0.5), uniform(-0.5, 0.5), 0.5 * size[2] - 0.02);
        pose.thisIsFirstThenSecond(placed(2, uniform(0, 7), lsVec3()), lean);
        pose.thisIsFirstThenSecond(lsTransform(pose), world);
        lsTransform ground = world;
        const bool onPlane = round % 3 == 0;
        if (!onPlane)
            ground.t() -= 0.5 * world.axis(2);
        ColGeometry* below = nullptr;
        if (onPlane)
            below = ColPlaneCreate();
        else
            below = ColBoxCreate(1.5, 1, 1);
        Body moving(ColBoxCreate(size[0], size[1], size[2]), pose), resting(below, ground);
        Body &first = round % 2 ? moving : resting, &second = round % 2 ? resting : moving;
        const auto most = static_cast<std::uint32_t>(3 + round % 6);
        const Hit quick(first, second, most);
        ColSetContactDegeneracyThreshold(0.001, 1 - 1e-10);
        const Hit slow(first, second, most);
        ColSetContactDegeneracyThreshold(0.001, 0.99);
        ASSERT_EQ(quick.result.contactCount, slow.result.contactCount) << round;
        ASSERT_EQ(quick.result.groupCount, slow.result.groupCount) << round;
        several += quick.result.contactCount > 2;
        for (int i = 0; i < quick.result.contactCount; ++i) {
            const ColContact &a = quick.contacts[i], &b = slow.contacts[i];
            ASSERT_LT((a.position - b.position).norm(), 1e-12) << round;
            ASSERT_EQ(a.separation, b.separation) << round;
            ASSERT_EQ(a.surfaceIndex, b.surfaceIndex) << round;
            ASSERT_EQ(a.dims, b.dims) << round;
        }
    }
    EXPECT_GT(several, 500);
}
