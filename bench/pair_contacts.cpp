// Time of one call of a pair's contact generator with its reduction, for pairs apart, touching by a
// thousandth and deep in each other, over 64 poses each; and for a ground of triangles the time of one
// triangle near the body.
#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCylinder.h>
#include <Col/ColIntersect.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColPlane.h>
#include <Col/ColPrimitives.h>
#include <Col/ColSphere.h>
#include <Col/ColTriangleList.h>

#include "PairPoses.h"

#include <benchmark/benchmark.h>
#include <string>

namespace {

struct Shape {
    const char* name;
    ColGeometry* geometry;
    KitReal lower; ///< height of the centre over the lowest point as it rests, m
};

/// A flat square of triangles about the origin, 4 m wide.
ColTriangleList* makeGround(int cells) {
    ColTriangleList* list = ColTriangleListCreate(2 * cells * cells);
    for (int i = 0; i < cells; ++i)
        for (int j = 0; j < cells; ++j) {
            const auto corner = [&](int a, int b) {
                return lsVec3(4.0 * (i + a) / cells - 2, 4.0 * (j + b) / cells - 2, 0);
            };
            ColTriangleListAddTriangle(list, corner(0, 0), corner(1, 0), corner(1, 1), 0);
            ColTriangleListAddTriangle(list, corner(0, 0), corner(1, 1), corner(0, 1), 0);
        }
    ColTriangleListBuild(list);
    return list;
}

/// Triangles of a ground within a metre's square, about those whose boxes meet that of a body.
KitReal trianglesNear(const Shape& ground) {
    const auto& list = *static_cast<const ColTriangleList*>(ground.geometry);
    return list.triangleCount / 16.0;
}

/// A model over another, turned a little more about the upright in each pose.
void intersectPoses(benchmark::State& state, const Shape& below, const Shape& above,
                    KitReal separation) {
    const int id = below.geometry->mID;
    const bool isRound = id == kColSphere || id == kColCapsule;
    const auto poses = PairPoses(below.lower + above.lower + separation, isRound);
    lsTransform ground, moving;
    ColModel *model1 = ColModelCreate(below.geometry), *model2 = ColModelCreate(above.geometry);
    ColModelSetTransformPtr(model1, &ground);
    ColModelSetTransformPtr(model2, &moving);
    ColModelPair* pair = ColModelPairCreate(model1, model2);
    ColHello(pair);
    ColContact contacts[8];
    ColIntersectResult result;
    result.contacts = contacts;
    result.contactMaxCount = 8;
    std::size_t pose = 0;
    for (auto unused : state) {
        (void)unused;
        moving = poses[pose++ % kPoses];
        ColIntersect(pair, &result);
        benchmark::DoNotOptimize(result.contactCount);
    }
    state.counters["contacts"] = result.contactCount;
    if (id == kColTriangleList)
        state.counters["s/triangle"] =
            benchmark::Counter(trianglesNear(below), benchmark::Counter::kIsIterationInvariantRate |
                                                         benchmark::Counter::kInvert);
    ColGoodbye(pair);
    ColModelPairDestroy(pair);
    ColModelDestroy(model1);
    ColModelDestroy(model2);
}

} // namespace

int main(int argc, char** argv) {
    ColPrimitivesRegisterTypes();
    ColPrimitivesRegisterInteractions();
    ColCapsulePrimitiveRegisterInteraction();
    ColPrimitivesSetDefaults();

    const Shape sphere{"sphere", ColSphereCreate(0.5), 0.5};
    const Shape box{"box", ColBoxCreate(1, 1, 1), 0.5};
    const Shape capsule{"capsule", ColCapsuleCreate(0.3, 0.6), 0.6};
    const Shape cylinder{"cylinder", ColCylinderCreate(0.5, 1), 0.5};
    const Shape plane{"plane", ColPlaneCreate(), 0};
    const Shape coarse{"triangles_1m", makeGround(4), 0}, fine{"triangles_10cm", makeGround(40), 0};
    const Shape* const pairs[][2] = {
        {&sphere, &sphere},  {&plane, &sphere},      {&box, &sphere},       {&box, &box},
        {&plane, &box},      {&box, &capsule},       {&capsule, &capsule},  {&capsule, &sphere},
        {&plane, &capsule},  {&cylinder, &sphere},   {&cylinder, &capsule}, {&plane, &cylinder},
        {&box, &cylinder},   {&cylinder, &cylinder}, {&coarse, &sphere},    {&coarse, &box},
        {&coarse, &capsule}, {&coarse, &cylinder},   {&fine, &sphere},      {&fine, &box},
        {&fine, &capsule},   {&fine, &cylinder},
    };
    for (const auto& pair : pairs)
        for (const PairGap& gap : kPairGaps)
            benchmark::RegisterBenchmark(
                (std::string(pair[0]->name) + "_" + pair[1]->name + "/" + gap.name).c_str(),
                [&, gap](benchmark::State& state) {
                    intersectPoses(state, *pair[0], *pair[1], gap.separation);
                });
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    for (const Shape& shape : {sphere, box, capsule, cylinder, plane, coarse, fine})
        ColGeometryDestroy(shape.geometry);
}
