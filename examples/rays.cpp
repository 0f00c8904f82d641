// A lamp over a scene: a fan of segments is cast into a space, each goes as far as its first hit. The
// two shadows on the ground should end where straight lines touch the ball and the box. Given the name
// of a file, it draws the fan as SVG, x to the right and z up.
#include <Col/Col.h>
#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColPlane.h>
#include <Col/ColPrimitives.h>
#include <Col/ColSphere.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr int kRays = 241;
constexpr double kLampHeight = 5, kReach = 20; // m

struct Thing {
    const char* name;
    ColGeometry* geometry;
    lsVec3 position;
    lsTransform frame = {};
    ColModel* model = nullptr;
    int hits = 0;
};

void draw(std::FILE* svg, const lsVec3& from, const lsVec3& to) {
    std::fprintf(svg,
                 "<path d='M%.3f,%.3f L%.3f,%.3f' stroke='#e93' stroke-width='.012'/>"
                 "<circle cx='%.3f' cy='%.3f' r='.03' fill='#c22'/>\n",
                 from[0], -from[2], to[0], -to[2], to[0], -to[2]);
}

} // namespace

int main(int argc, char** argv) {
    ColPrimitivesRegisterTypes();
    ColPrimitivesRegisterInteractions();
    ColCapsulePrimitiveRegisterInteraction();
    CxSpace* space = ColSpaceAxisSortCreate(static_cast<int>(ColAllAxes), 8, 8, false);
    std::vector<Thing> things = {
        {"ground", ColPlaneCreate(), {0, 0, 0}},
        {"ball", ColSphereCreate(0.5), {-2, 0, 2}},
        {"box", ColBoxCreate(1, 1, 1), {2, 0, 0.5}},
        {"capsule", ColCapsuleCreate(0.3, 1), {0, 0, 1.2}},
    };
    for (Thing& thing : things) {
        thing.frame.t() = thing.position;
        thing.model = ColModelCreate(thing.geometry);
        ColModelSetTransformPtr(thing.model, &thing.frame);
        ColSpaceInsertModel(space, thing.model);
    }
    ColSpaceEndChanges(space); // the boxes find their places

    std::FILE* svg = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (svg)
        std::fprintf(svg, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='-8 -5.5 16 6'>\n");
    const lsVec3 lamp(0, 0, kLampHeight);
    double worst = 0; // m, of what the ground says of the height
    int dark = 0;
    for (int i = 0; i < kRays; ++i) {
        const double x = -6 + 12.0 * i / (kRays - 1); // where the ray would reach the ground
        lsVec3 direction = lsVec3(x, 0, 0) - lamp;
        direction.normalize();
        ColLineSegIntersectResult hit;
        if (ColSpaceLineSegIntersect(space, lamp, lamp + kReach * direction, &hit, nullptr) == 0)
            continue;
        for (Thing& thing : things)
            if (hit.model == thing.model)
                ++thing.hits;
        if (hit.model == things[0].model)
            worst = std::max(worst, std::abs(hit.position[0] - x));
        else
            ++dark;
        if (svg)
            draw(svg, lamp, hit.position);
    }
    if (svg) {
        std::fprintf(svg, "</svg>\n");
        std::fclose(svg);
    }
    for (const Thing& thing : things)
        std::printf("%-8s hit by %3d rays\n", thing.name, thing.hits);

    // Between the tangents from the lamp to the ball, and to the box.
    const double slant = std::hypot(2.0, 3.0), middle = std::atan2(2, 3);
    const double half = std::asin(0.5 / slant);
    const double ball = kLampHeight * (std::tan(middle + half) - std::tan(middle - half));
    const double box = 2.5 * 5 / 4 - 1.5; // from its near lower edge to past its far upper one
    const double spacing = 12.0 / (kRays - 1);
    std::printf("ball's shadow %.3f m, expected %.3f m; box's %.3f m, expected %.3f m (rays every "
                "%.2f m)\n",
                things[1].hits * spacing, ball, things[2].hits * spacing, box, spacing);
    std::printf("ground hit where it should be, to %.1g m; %d of %d rays end in the dark\n", worst,
                dark, kRays);
    const bool right = std::abs(things[1].hits * spacing - ball) <= 2 * spacing &&
                       std::abs(things[2].hits * spacing - box) <= 2 * spacing && worst < 1e-12;
    for (Thing& thing : things) {
        ColSpaceRemoveModel(thing.model);
        ColModelDestroy(thing.model);
        ColGeometryDestroy(thing.geometry);
    }
    ColSpaceDestroy(space);
    return right ? 0 : 1;
}
