#pragma once
#include <Col/Col.h>

/// Balls of a type made for a test: enough of a geometry to watch the frame at work.
struct Ball : ColGeometry {
    KitReal radius = 1;
    explicit Ball(int type, KitReal r) : radius(r) { ColGeometryInitObject(this, type); }
};

inline const Ball& ballOf(const ColGeometry* g) {
    return *static_cast<const Ball*>(g);
}

inline ColGeometryFunctions ballFunctions() {
    return {
        .destroy = [](ColGeometry*) {},
        .getAABB =
            [](const ColGeometry* g, const lsTransform* tm, lsVec3* min, lsVec3* max,
               KitReal* bounds) {
                const KitReal r = ballOf(g).radius;
                const lsVec3 c = tm ? tm->t() : lsVec3();
                *min = c - lsVec3(r, r, r);
                *max = c + lsVec3(r, r, r);
                for (int i = 0; bounds && i < 3; ++i) {
                    bounds[2 * i] = (*min)[i];
                    bounds[2 * i + 1] = (*max)[i];
                }
            },
        .getBSphere =
            [](const ColGeometry* g, lsVec3* centre, KitReal* radius) {
                *centre = lsVec3();
                *radius = ballOf(g).radius;
            },
        .maximumPoint =
            [](const ColGeometry* g, const lsTransform* tm, const lsVec3& d, lsVec3* p) {
                lsVec3 u = d;
                u.normalize();
                *p = (tm ? tm->t() : lsVec3()) + u * ballOf(g).radius;
            },
        .getMassProperties =
            [](const ColGeometry* g, ColMassProperties* out) {
                const KitReal r = ballOf(g).radius;
                *out = {};
                out->mass = 4.0 / 3 * 3.14159265358979323846 * r * r * r;
                for (int i = 0; i < 3; ++i)
                    out->inertia[i][i] = 0.4 * out->mass * r * r;
                return true;
            },
        .getPointInVolume =
            [](const ColGeometry* g, const lsTransform* tm, const lsVec3& p) {
                return (p - tm->t()).norm() <= ballOf(g).radius + g->mSkin;
            },
    };
}

/// One contact midway between two balls.
inline int intersectBalls(ColModelPair* pair, ColIntersectResult* result) {
    const KitReal r1 = ballOf(pair->model1->mGeometry).radius;
    const KitReal r2 = ballOf(pair->model2->mGeometry).radius;
    ColContact c;
    c.normal = pair->model1->mGlobalTM->t() - pair->model2->mGlobalTM->t();
    c.separation = c.normal.normalize() - r1 - r2;
    if (c.separation > pair->model1->mPadding + pair->model2->mPadding)
        return 0;
    c.surfaceIndex = kColSurfaceModel1;
    c.position = pair->model1->mGlobalTM->t() - c.normal * r1;
    if (pair->request->contactMaxCount > 0 && result->contactMaxCount > 0)
        result->contacts[result->contactCount++] = c;
    result->normal = c.normal;
    return 1;
}

/// A ball at a place, in a model of its own.
struct BallModel {
    Ball ball;
    lsTransform transform;
    ColModel* model;

    BallModel(int type, KitReal radius, const lsVec3& at) : ball(type, radius) {
        transform.t() = at;
        model = ColModelCreate(&ball);
        ColModelSetTransformPtr(model, &transform);
    }
    ~BallModel() { ColModelDestroy(model); }
    BallModel(const BallModel&) = delete;
    BallModel& operator=(const BallModel&) = delete;
};
