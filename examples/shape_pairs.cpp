// Contacts of every pair of primitives, and of a plane cut into triangles, one resting 2 mm deep in the
// other: where they are, how deep, and whether the depth is that of the rest. Given the name of a file, it draws them as SVG, seen from
// the side (x to the right, z up), contacts in red with their normals.
#include <Col/ColBox.h>
#include <Col/ColCapsule.h>
#include <Col/ColCone.h>
#include <Col/ColCylinder.h>
#include <Col/ColIntersect.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColPlane.h>
#include <Col/ColPrimitives.h>
#include <Col/ColSphere.h>
#include <Col/ColTriangleList.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

constexpr double kDepth = 0.002; // m

struct Shape {
    const char* name;
    ColGeometry* geometry;
    double lower; // m from the centre to the lowest point
};

// The plane z = 0 around the origin, cut into triangles of half a metre.
ColTriangleList* makeTriangles() {
    ColTriangleList* list = ColTriangleListCreate(32);
    for (int i = -2; i < 2; ++i)
        for (int j = -2; j < 2; ++j) {
            const lsVec3 a(0.5 * i, 0.5 * j, 0), b(0.5 * i + 0.5, 0.5 * j, 0);
            const lsVec3 c(0.5 * i + 0.5, 0.5 * j + 0.5, 0), d(0.5 * i, 0.5 * j + 0.5, 0);
            ColTriangleListAddTriangle(list, a, b, c, 8 * i + 2 * j);
            ColTriangleListAddTriangle(list, a, c, d, 8 * i + 2 * j + 1);
        }
    ColTriangleListBuild(list);
    return list;
}

// Outline of a shape seen along y, as a polygon of its farthest points; a plane is its edge.
void drawOutline(std::FILE* svg, const Shape& shape, const lsTransform& tm) {
    std::fprintf(svg, "<polygon fill='#9bd8' stroke='#357' stroke-width='.01' points='");
    for (int i = 0; i < 90; ++i) {
        const double angle = 2 * M_PI * (i + 0.5) / 90;
        lsVec3 p;
        if (shape.geometry->mID == kColPlane || shape.geometry->mID == kColTriangleList)
            p = lsVec3(i % 4 == 1 || i % 4 == 2 ? 1 : -1, 0, i % 4 < 2 ? 0 : -0.5);
        else
            ColGeometryMaximumPoint(shape.geometry, &tm,
                                    lsVec3(std::cos(angle), 0, std::sin(angle)), &p);
        std::fprintf(svg, "%.4f,%.4f ", p[0], -p[2]);
    }
    std::fprintf(svg, "'/>\n");
}

void drawContacts(std::FILE* svg, const ColIntersectResult& result) {
    for (int i = 0; i < result.contactCount; ++i) {
        const ColContact& c = result.contacts[i];
        const lsVec3 tip = c.position - 0.3 * c.normal;
        std::fprintf(svg, "<circle cx='%.4f' cy='%.4f' r='.03' fill='#d22'/>", c.position[0],
                     -c.position[2]);
        std::fprintf(svg, "<path d='M%.4f,%.4f L%.4f,%.4f' stroke='#d22' stroke-width='.015'/>\n",
                     c.position[0], -c.position[2], tip[0], -tip[2]);
    }
}

void showPair(const Shape& below, const Shape& above, std::FILE* svg, int place) {
    lsTransform ground, moved;
    const bool isRound = below.geometry->mID == kColSphere || below.geometry->mID == kColCapsule;
    const double aside = isRound ? 0 : 0.1; // m
    moved.t() = lsVec3(aside, aside / 2, below.lower + above.lower - kDepth);
    ColModel *model1 = ColModelCreate(below.geometry), *model2 = ColModelCreate(above.geometry);
    ColModelSetTransformPtr(model1, &ground);
    ColModelSetTransformPtr(model2, &moved);
    ColModelPair* pair = ColModelPairCreate(model1, model2);
    ColContact contacts[8];
    ColIntersectResult result;
    result.contacts = contacts;
    result.contactMaxCount = 8;
    ColHello(pair);
    const bool served = ColIntersect(pair, &result) != 0;

    std::printf("%-8s on %-8s: ", above.name, below.name);
    if (!served)
        std::printf("not served\n");
    else if (result.contactCount == 0)
        std::printf("%s, no contacts\n", result.touch ? "touch" : "apart");
    for (int i = 0; i < result.contactCount; ++i) {
        const ColContact& c = contacts[i];
        std::printf("%s(%6.3f %6.3f %6.3f) %.2f mm deep", i ? "\n                      " : "",
                    c.position[0], c.position[1], c.position[2], -1000 * c.separation);
        if (i + 1 == result.contactCount)
            std::printf("\n");
    }
    if (svg) {
        std::fprintf(svg, "<g transform='translate(%d,%d)'>\n", 3 * (place % 6) + 2,
                     3 * (place / 6) + 2);
        drawOutline(svg, below, ground);
        drawOutline(svg, above, moved);
        drawContacts(svg, result);
        std::fprintf(svg, "</g>\n");
    }
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
    const std::vector<Shape> shapes = {
        {"plane", ColPlaneCreate(), 0},
        {"mesh", makeTriangles(), 0},
        {"sphere", ColSphereCreate(0.5), 0.5},
        {"box", ColBoxCreate(1.2, 0.8, 0.6), 0.3},
        {"cylinder", ColCylinderCreate(0.5, 0.8), 0.4},
        {"capsule", ColCapsuleCreate(0.3, 0.4), 0.5},
        {"cone", ColConeCreate(0.5, 0.3, 0.8), 0.4},
    };
    std::FILE* svg = argc > 1 ? std::fopen(argv[1], "w") : nullptr;
    if (svg)
        std::fprintf(svg, "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 19 16'>\n");
    int place = 0;
    for (std::size_t i = 0; i < shapes.size(); ++i)
        for (std::size_t k = std::max<std::size_t>(i, 2); k < shapes.size(); ++k)
            showPair(shapes[i], shapes[k], svg, place++);
    if (svg) {
        std::fprintf(svg, "</svg>\n");
        std::fclose(svg);
    }
    for (const Shape& shape : shapes)
        ColGeometryDestroy(shape.geometry);
}
