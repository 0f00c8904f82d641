#include "../../Col/src/math/TriangleDistance.h"
#include "../../Col/src/math/triutils.h"
#include "PairFixture.h"

#include <Col/ColPrimitivePrimitiveDistance.h>
#include <Col/ColTriangleList.h>

#include <algorithm>
#include <functional>

namespace {

using Make = ColGeometry* (*)();
struct Solid {
    const char* name;
    Make make;
    KitReal bottom; ///< half height as it stands, m
};
const Solid kSolids[] = {
    {"sphere", [] { return static_cast<ColGeometry*>(ColSphereCreate(0.4)); }, 0.4},
    {"box", [] { return static_cast<ColGeometry*>(ColBoxCreate(0.6, 1, 0.8)); }, 0.4},
    {"cylinder", [] { return static_cast<ColGeometry*>(ColCylinderCreate(0.4, 0.7)); }, 0.35},
    {"capsule", [] { return static_cast<ColGeometry*>(ColCapsuleCreate(0.3, 0.8)); }, 0.7},
};

using Height = std::function<KitReal(KitReal x, KitReal y)>;

/// A square of triangles about the origin over a height field, its inner corners moved at random.
ColTriangleList* makeGround(int cells, KitReal size, std::mt19937& random, const Height& height) {
    std::uniform_real_distribution<KitReal> jitter(-0.3, 0.3);
    std::vector<lsVec3> corners;
    for (int i = 0; i <= cells; ++i)
        for (int j = 0; j <= cells; ++j) {
            const bool inner = i > 0 && j > 0 && i < cells && j < cells;
            const KitReal x = size * ((i + (inner ? jitter(random) : 0)) / cells - 0.5);
            const KitReal y = size * ((j + (inner ? jitter(random) : 0)) / cells - 0.5);
            corners.emplace_back(x, y, height(x, y));
        }
    ColTriangleList* list = ColTriangleListCreate(0);
    for (int i = 0; i < cells; ++i)
        for (int j = 0; j < cells; ++j) {
            const auto at = [&](int a, int b) {
                return corners[static_cast<std::size_t>((i + a) * (cells + 1) + j + b)];
            };
            const int index = 2 * (i * cells + j);
            if ((i + j) % 2) {
                ColTriangleListAddTriangle(list, at(0, 0), at(1, 0), at(1, 1), index);
                ColTriangleListAddTriangle(list, at(0, 0), at(1, 1), at(0, 1), index + 1);
            } else {
                ColTriangleListAddTriangle(list, at(0, 0), at(1, 0), at(0, 1), index);
                ColTriangleListAddTriangle(list, at(1, 0), at(1, 1), at(0, 1), index + 1);
            }
        }
    ColTriangleListBuild(list);
    return list;
}

ColTriangleList* makeCube(KitReal half) {
    ColTriangleList* list = ColTriangleListCreate(12);
    for (int axis = 0; axis < 3; ++axis)
        for (const KitReal side : {-1.0, 1.0}) {
            lsVec3 p[4];
            for (int k = 0; k < 4; ++k) {
                p[k][axis] = side * half;
                p[k][(axis + 1) % 3] = (k == 0 || k == 3 ? -side : side) * half;
                p[k][(axis + 2) % 3] = (k < 2 ? -1 : 1) * half;
            }
            ColTriangleListAddTriangle(list, p[0], p[1], p[2], 0);
            ColTriangleListAddTriangle(list, p[0], p[2], p[3], 1);
        }
    ColTriangleListBuild(list);
    return list;
}

/// Separation of a solid and a triangle along a unit direction.
KitReal separationAlong(const lsVec3& n, const ColModel& solid, const CxTriangleNE& t) {
    lsVec3 low;
    ColGeometryMaximumPoint(solid.mGeometry, solid.mGlobalTM, -n, &low);
    return n.dot(low) - std::max({n.dot(t.mVertex[0]), n.dot(t.mVertex[1]), n.dot(t.mVertex[2])});
}

/// The greatest over all directions, or a little less: the search is of random directions.
KitReal separationFromTriangle(const ColModel& solid, const CxTriangleNE& t, std::mt19937& random) {
    std::normal_distribution<KitReal> normal;
    lsVec3 best = t.mNormal;
    KitReal found = separationAlong(best, solid, t);
    const auto offer = [&](lsVec3 n) {
        n.normalize();
        const KitReal separation = separationAlong(n, solid, t);
        if (separation > found) {
            found = separation;
            best = n;
        }
    };
    for (int i = 0; i < 1500; ++i)
        offer(lsVec3(normal(random), normal(random), normal(random)));
    for (KitReal step = 0.1; step > 1e-7; step *= 0.7)
        for (int i = 0; i < 30; ++i)
            offer(best + step * lsVec3(normal(random), normal(random), normal(random)));
    return found;
}

KitReal areaSeenAlong(const Hit& hit, const lsVec3& n) {
    KitReal widest = 0; // twice the area of the largest triangle of contacts
    for (int i = 0; i < hit.result.contactCount; ++i)
        for (int j = 0; j < i; ++j)
            for (int k = 0; k < j; ++k)
                widest = std::max(widest,
                                  std::abs(n.dot((hit.point(j, 0) - hit.point(i, 0))
                                                     .cross(hit.point(k, 0) - hit.point(i, 0)))));
    return widest;
}

class TriangleListTest : public PairTest {};

} // namespace

// One triangle without neighbours against all directions tried: touch, depth, and where the contact
// lies.
TEST_F(TriangleListTest, SeparationFromOneTriangleIsThatOfAllDirections) {
    int deep = 0;
    for (const Solid& solid : kSolids)
        for (int round = 0; round < 60; ++round) {
            ColTriangleList* list = ColTriangleListCreate(1);
            const lsVec3 a = 0.7 * randomUnit(), b = 0.7 * randomUnit(), c = 0.7 * randomUnit();
            if (!ColTriangleListAddTriangle(list, a, b, c, 7))
                continue;
            ColTriangleListBuild(list);
            const CxTriangleNE triangle = list->triangleList[0];
            Body ground(list), body(solid.make(), randomRotation());
            const lsVec3 foot = uniform(0, 1) < 0.5 ? a : 0.4 * a + 0.3 * b + 0.3 * c;
            lsVec3 way = triangle.mNormal + uniform(0, 0.9) * randomUnit();
            way.normalize();
            body.frame.t() = foot + 2 * way;
            const KitReal wanted = round % 4 == 0 ? 0.01 : -uniform(0.001, 0.03);
            for (int i = 0; i < 5; ++i)
                body.frame.t().addMultiple(
                    wanted - separationFromTriangle(body.model, triangle, random), way);
            const KitReal truth = separationFromTriangle(body.model, triangle, random);
            if (triangle.mNormal.dot(body.frame.t() - a) < 0.01 || truth < -0.05)
                continue;
            SCOPED_TRACE(std::string(solid.name) + " round " + std::to_string(round) +
                         " separation " + std::to_string(truth));
            const Hit hit(body, ground);
            if (truth > 1e-6) {
                EXPECT_EQ(hit.result.touch, 0);
                continue;
            }
            if (hit.result.contactCount == 0 && truth > -0.005)
                continue; // a corner may dip past the border
            ASSERT_GT(hit.result.contactCount, 0);
            ++deep;
            const ColContact& contact = hit.deepest();
            const int at = static_cast<int>(&contact - hit.contacts);
            // Rims are met at the point nearest to an edge's line, not quite that of least depth.
            const KitReal share = body.geometry->mID == kColCylinder ? 1.2 : 1.01;
            EXPECT_GE(contact.separation, share * truth - 1e-6);
            const KitReal along = separationAlong(contact.normal, body.model, triangle);
            EXPECT_GE(contact.separation, along - 1e-9);
            EXPECT_LT(contact.separation, 0);
            EXPECT_EQ(contact.indexElement2, 7);
            lsVec3 off = hit.point(at, 1) - a;
            // On the triangle: in its plane within the depth, and no farther out than its corners.
            EXPECT_LT(std::abs(triangle.mNormal.dot(off)), 1e-6 + 1e-2 * -truth);
            for (int e = 0; e < 3; ++e) {
                lsVec3 out = triangle.mEdge[e].cross(triangle.mNormal);
                out.normalize();
                EXPECT_LT(out.dot(hit.point(at, 1) - triangle.mVertex[e]), 1e-5 - 0.02 * truth);
            }
        }
    EXPECT_GT(deep, 100);
}

// On a plane cut into triangles of any size bodies touch as on the plane: the same depth, normals that
// do not lean at inner edges, and as wide a stance.
TEST_F(TriangleListTest, CutPlaneIsAsGoodAsThePlane) {
    for (const Solid& solid : kSolids)
        for (int round = 0; round < 40; ++round) {
            const int cells = round % 3 == 0 ? 2 : round % 3 == 1 ? 9 : 40;
            const lsTransform common = round % 2 ? randomRotation() : lsTransform();
            Body ground(makeGround(cells, 4, random, [](KitReal, KitReal) { return 0; }), common);
            Body plane(ColPlaneCreate(), common);
            const KitReal tilt = round % 4 < 2 ? 0 : round % 4 == 2 ? 0.01 : uniform(0, 1.5);
            const lsTransform yaw = placed(2, uniform(-3, 3), lsVec3());
            lsTransform pose = placed(round % 2, tilt, lsVec3());
            pose.thisIsFirstThenSecond(pose, yaw);
            Body body(solid.make(), pose);
            lsVec3 low;
            ColGeometryMaximumPoint(body.geometry, &pose, lsVec3(0, 0, -1), &low);
            const KitReal depth = round % 5 == 0 ? 0.1 : 0.001;
            pose.t() = lsVec3(uniform(-0.7, 0.7), uniform(-0.7, 0.7), -low[2] - depth);
            body.frame.thisIsFirstThenSecond(pose, common);
            SCOPED_TRACE(std::string(solid.name) + " round " + std::to_string(round) + " tilt " +
                         std::to_string(tilt));
            const Hit onPlane(body, plane, 4), onGround(body, ground, 4);
            ASSERT_GT(onGround.result.contactCount, 0);
            const lsVec3& n = common.axis(2);
            for (int i = 0; i < onGround.result.contactCount; ++i) {
                const ColContact& c = onGround.contacts[i];
                EXPECT_LT((c.normal - n).norm(), 1e-9);
                EXPECT_NEAR(c.separation, n.dot(onGround.point(i, 0) - common.t()), 1e-9);
            }
            EXPECT_NEAR(onGround.deepest().separation, onPlane.deepest().separation, 1e-9);
            EXPECT_GE(areaSeenAlong(onGround, n), 0.97 * areaSeenAlong(onPlane, n) - 1e-6);
            if (tilt != 0)
                continue;
            EXPECT_EQ(onGround.result.contactCount, onPlane.result.contactCount);
            for (int i = 0; i < onPlane.result.contactCount; ++i) {
                KitReal nearest = 1;
                for (int k = 0; k < onGround.result.contactCount; ++k)
                    nearest =
                        std::min(nearest, (onPlane.point(i, 0) - onGround.point(k, 0)).norm());
                // A round end has no corners: any four points of its rim do.
                if (body.geometry->mID != kColCylinder) {
                    EXPECT_LT(nearest, 1e-6) << i;
                }
            }
        }
}

// A box on the rim of a closed cube stands on its top: the sides, which it overlaps by the same little
// depth but reaches deep behind, must not push it off.
TEST_F(TriangleListTest, SidesOfACubeDoNotPushOffItsTop) {
    for (const Solid& solid : kSolids)
        for (const KitReal depth : {0.001, 0.01})
            for (KitReal over = -0.3; over < 0.35; over += 0.02) {
                Body cube(makeCube(1));
                Body body(
                    solid.make(),
                    placed(2, 0.3, lsVec3(1 + over, 0.1 + over / 3, 1 + solid.bottom - depth)));
                const Hit hit(body, cube, 8);
                SCOPED_TRACE(std::string(solid.name) + " beyond the rim by " +
                             std::to_string(over));
                // The sphere and the end of the capsule leave the face where their centre does.
                const bool isRound =
                    body.geometry->mID == kColSphere || body.geometry->mID == kColCapsule;
                if (!isRound || over < 0) {
                    ASSERT_GT(hit.result.contactCount, 0);
                    EXPECT_NEAR(hit.deepest().separation, -depth, 1e-3 * depth);
                }
                for (int i = 0; i < hit.result.contactCount; ++i) {
                    if (isRound)
                        EXPECT_GE(hit.contacts[i].separation, -depth - 1e-12);
                    else
                        EXPECT_NEAR(hit.contacts[i].normal[2], 1, 1e-9);
                }
            }
}

TEST_F(TriangleListTest, RidgesBearAndValleysDoNot) {
    const auto roof = [](KitReal sign) {
        return [sign](KitReal x, KitReal) { return -sign * std::abs(x); };
    };
    std::mt19937 fixed(5);
    const auto ground = [&](KitReal sign) {
        // Two slopes that meet in the plane x = 0, a row of corners.
        ColTriangleList* list = ColTriangleListCreate(0);
        const Height height = roof(sign);
        for (const KitReal side : {-1.0, 1.0})
            for (int j = -4; j < 4; ++j) {
                const KitReal y0 = 0.5 * j, y1 = y0 + 0.5;
                lsVec3 a(0, y0, 0), b(0, y1, 0), c(side * 2, y0, height(2, 0)),
                    d(side * 2, y1, c[2]);
                if (side > 0) {
                    ColTriangleListAddTriangle(list, a, c, d, 0);
                    ColTriangleListAddTriangle(list, a, d, b, 0);
                } else {
                    ColTriangleListAddTriangle(list, a, d, c, 0);
                    ColTriangleListAddTriangle(list, a, b, d, 0);
                }
            }
        ColTriangleListBuild(list);
        return list;
    };
    constexpr KitReal kDepth = 0.002;
    // A box lies level on the ridge: contacts along it, straight up.
    Body ridge(ground(1)),
        box(ColBoxCreate(0.4, 1.2, 0.4), placed(2, 0, lsVec3(0.02, 0.07, 0.2 - kDepth)));
    const Hit onRidge(box, ridge, 4);
    ASSERT_GE(onRidge.result.contactCount, 2);
    KitReal low = 1, high = -1;
    for (int i = 0; i < onRidge.result.contactCount; ++i) {
        EXPECT_NEAR(onRidge.contacts[i].normal[2], 1, 1e-9);
        EXPECT_NEAR(onRidge.contacts[i].separation, -kDepth, 1e-9);
        low = std::min(low, onRidge.point(i, 1)[1]);
        high = std::max(high, onRidge.point(i, 1)[1]);
    }
    EXPECT_NEAR(low, -0.53, 1e-5);
    EXPECT_NEAR(high, 0.67, 1e-5);
    // A cylinder lies along the ridge, another across it, a capsule along it.
    const auto straightUp = [&](ColGeometry* g, const lsTransform& tm, KitReal from, KitReal to) {
        Body body(g, tm);
        const Hit hit(body, ridge, 4);
        ASSERT_GT(hit.result.contactCount, 0);
        KitReal first = 1, last = -1;
        for (int i = 0; i < hit.result.contactCount; ++i) {
            EXPECT_NEAR(hit.contacts[i].normal[2], 1, 1e-9);
            EXPECT_NEAR(hit.contacts[i].separation, -kDepth, 1e-9);
            first = std::min(first, hit.point(i, 1)[1]);
            last = std::max(last, hit.point(i, 1)[1]);
        }
        EXPECT_NEAR(first, from, 1e-9);
        EXPECT_NEAR(last, to, 1e-9);
    };
    const lsVec3 above(0, 0.1, 0.3 - kDepth);
    straightUp(ColCylinderCreate(0.3, 1), placed(0, M_PI / 2, above), -0.4, 0.6);
    straightUp(ColCylinderCreate(0.3, 1), placed(1, M_PI / 2, above), 0.1, 0.1);
    straightUp(ColCapsuleCreate(0.3, 1), placed(0, M_PI / 2, above), -0.4, 0.6);
    straightUp(ColSphereCreate(0.3), placed(0, 0, above), 0.1, 0.1);

    // A ball in the valley touches both slopes and not the edge.
    const KitReal r = 0.3, rest = r * std::sqrt(2.0) - std::sqrt(2.0) * kDepth;
    Body valley(ground(-1)), ball(ColSphereCreate(r), placed(2, 0, lsVec3(0, 0.1, rest)));
    const Hit inValley(ball, valley, 4);
    ASSERT_EQ(inValley.result.contactCount, 2);
    for (int i = 0; i < 2; ++i) {
        EXPECT_NEAR(std::abs(inValley.contacts[i].normal[0]), std::sqrt(0.5), 1e-9);
        EXPECT_NEAR(inValley.contacts[i].separation, -kDepth, 1e-9);
    }
}

namespace {

struct Recorded {
    ColTriangleList* source;
    lsVec3 low, high;
    int calls, cacheIndex;
};

/// Gives every triangle of a source, the box be what it may.
void copySource(ColModelPair*, const lsVec3& low, const lsVec3& high, ColTriangleList* list) {
    auto& data = *static_cast<Recorded*>(list->userData);
    ++data.calls;
    data.low = low;
    data.high = high;
    data.cacheIndex = list->cacheIndex;
    for (int i = 0; i < data.source->triangleCount; ++i) {
        const CxTriangleNE& t = data.source->triangleList[i];
        *ColTriangleListAddTriangle(list, t.mVertex[0], t.mVertex[1], t.mVertex[2], t.mIndex) = t;
    }
}

void copyNearBall(ColModelPair* pair, const lsVec3& centre, KitReal radius, ColTriangleList* list) {
    const lsVec3 half(radius, radius, radius);
    copySource(pair, centre - half, centre + half, list);
}

} // namespace

// A list made on demand gives what its triangles give; the box that is asked for holds the body, the
// worker's list is filled and the geometry is left alone.
TEST_F(TriangleListTest, GeneratorsFillTheWorkersList) {
    Body ground(makeGround(30, 4, random, [](KitReal x, KitReal y) { return 0.1 * x * y; }));
    for (const bool byBox : {true, false})
        for (const bool ownList : {true, false}) {
            Recorded data{static_cast<ColTriangleList*>(ground.geometry), {}, {}, 0, 0};
            ColTriangleList* list = ColTriangleListCreate(0);
            ColTriangleListSetBounds(list, lsVec3(-2, -2, -1), lsVec3(2, 2, 1));
            list->userData = &data;
            if (byBox)
                list->triangleListAABBGenerator = copySource;
            else
                list->triangleListGenerator = copyNearBall;
            const lsTransform common = placed(0, 0.7, lsVec3(3, 1, 2));
            Body made(list, common);
            ground.frame = common;
            Body box(ColBoxCreate(1, 1, 1), placed(2, 0.3, lsVec3(0.2, 0.1, 0.47)));
            box.frame.thisIsFirstThenSecond(box.frame, common);
            const Hit expected(box, ground, 4);
            Hit hit(box, made, 4);
            ColTriangleList* user = ColTriangleListCreate(128);
            user->cacheIndex = 3;
            hit.result.userTriangleList = ownList ? user : nullptr;
            data.calls = 0;
            ColIntersect(&hit.pair, &hit.result);
            EXPECT_EQ(data.calls, 1);
            EXPECT_EQ(data.cacheIndex, ownList ? 3 : -1);
            EXPECT_EQ(list->triangleCount, 0);
            if (ownList) {
                EXPECT_EQ(user->triangleCount, data.source->triangleCount);
            }
            lsVec3 corner;
            for (int k = 0; k < 8; ++k) {
                corner = lsVec3(k & 1 ? 0.5 : -0.5, k & 2 ? 0.5 : -0.5, k & 4 ? 0.5 : -0.5);
                corner = common.inverseTransform(box.frame.transform(corner));
                for (int i = 0; i < 3; ++i) {
                    EXPECT_LE(data.low[i], corner[i] + 1e-9);
                    EXPECT_GE(data.high[i], corner[i] - 1e-9);
                }
            }
            ASSERT_EQ(hit.result.contactCount, expected.result.contactCount);
            for (int i = 0; i < hit.result.contactCount; ++i)
                EXPECT_EQ(hit.contacts[i].position, expected.contacts[i].position);
            ColTriangleListDestroy(user);
        }
}

// More contacts than the buffer holds are reduced on the way and none of the outline is lost; with no
// contacts wanted a pair only tells whether it touches.
TEST_F(TriangleListTest, ManyTrianglesAndNoContacts) {
    Body ground(makeGround(100, 4, random, [](KitReal, KitReal) { return 0; }));
    for (const Solid& solid : kSolids) {
        Body body(solid.make(), placed(2, 0.2, lsVec3(0, 0, solid.bottom - 0.001)));
        const Hit wanted(body, ground, 4), none(body, ground, 0);
        Body plane(ColPlaneCreate());
        EXPECT_GE(areaSeenAlong(wanted, lsVec3(0, 0, 1)),
                  0.97 * areaSeenAlong(Hit(body, plane, 4), lsVec3(0, 0, 1)));
        EXPECT_EQ(none.result.touch, 1);
        EXPECT_EQ(none.result.contactCount, 0);
        body.frame.t()[2] += 0.1;
        EXPECT_EQ(Hit(body, ground, 0).result.touch, 0);
    }
}

// The distance of solids from a triangle is the least of many points of the triangle.
TEST_F(TriangleListTest, DistancesAreThoseOfSampledPoints) {
    constexpr int kSteps = 80;
    const lsVec3 radii(0.3, 0.5, 0.4);
    const auto distanceTo = [&](int solid, const CxTriangleNE& t) {
        return solid == 0   ? sphereTriDist(0.4, t)
               : solid == 1 ? boxTriDist(radii, t)
               : solid == 2 ? cylinderTriDist(0.4, 0.35, t)
                            : capsuleTriDist(0.3, 0.4, t);
    };
    int apart = 0, over = 0;
    for (int solid = 0; solid < 4; ++solid)
        for (int round = 0; round < 100; ++round) {
            const Body body(kSolids[solid].make());
            const lsVec3 centre = uniform(0, 1.3) * randomUnit();
            const KitReal size = round % 2 ? 0.4 : 2;
            CxTriangleNE t;
            ASSERT_TRUE(CxTriangleNESet(&t, centre + size * randomUnit(),
                                        centre + size * randomUnit(), centre + size * randomUnit(),
                                        0));
            KitReal least = kKitInfinity, found = 0;
            lsVec3 outward;
            for (int i = 0; i <= kSteps; ++i)
                for (int j = 0; i + j <= kSteps; ++j) {
                    const lsVec3 p = t.mVertex[0] + (1.0 * i / kSteps) * t.mEdge[0] -
                                     (1.0 * j / kSteps) * t.mEdge[2];
                    ASSERT_EQ(ColPointSurfaceDistance(&body.model, p, &found, &outward), 1);
                    least = std::min(least, found);
                }
            SCOPED_TRACE(std::string(kSolids[solid].name) + " round " + std::to_string(round));
            const TriangleDistance d = distanceTo(solid, t);
            EXPECT_LE(d.distance, std::max(least, 0.0) + 1e-9);
            // Steps of 1/80 of an edge: the nearest point lies up to 0.6 of one beside a sample.
            EXPECT_GE(d.distance, std::max(least, 0.0) - 0.6 * 2 * size / kSteps);
            if (d.distance == 0) {
                ++over;
                continue;
            }
            ++apart;
            EXPECT_NEAR((d.onSolid - d.onTriangle).norm(), d.distance, 1e-9);
            ColPointSurfaceDistance(&body.model, d.onTriangle, &found, &outward);
            EXPECT_NEAR(found, d.distance, 1e-9);
        }
    EXPECT_GT(apart, 100);
    EXPECT_GT(over, 50);
}

TEST_F(TriangleListTest, PlaneMeetsTheCornersBelowIt) {
    CxTriangleNE t;
    ASSERT_TRUE(CxTriangleNESet(&t, lsVec3(0, 0, -0.2), lsVec3(1, 0, -0.1), lsVec3(0, 1, 0.3), 4));
    ColContact contacts[4];
    ColIntersectResult result;
    result.contacts = contacts;
    result.contactMaxCount = 4;
    TriangleContacts out(&result, placed(2, 0, lsVec3(0, 0, 5)));
    ASSERT_EQ(PlaneCxTriangleNEIntersect(&out, t, 0), 1);
    ASSERT_EQ(result.contactCount, 2);
    EXPECT_EQ(contacts[1].position, lsVec3(1, 0, 5));
    EXPECT_EQ(contacts[1].normal, lsVec3(0, 0, -1));
    EXPECT_EQ(contacts[1].separation, -0.1);
    EXPECT_EQ(contacts[1].indexElement2, 4);
    for (lsVec3& vertex : t.mVertex)
        vertex[2] += 0.21;
    EXPECT_EQ(PlaneCxTriangleNEIntersect(&out, t, 0), 0);
}
