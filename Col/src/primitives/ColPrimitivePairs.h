#pragma once
#include <Col/ColInteractions.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColModelPair.h>
#include <Col/ColPathIntersect.h>
#include <Kit/KitTypes.h>

// Contact generators of pairs of primitives. A pair's models come in the order of its name. Each
// answers whether the models touch; a safe time is one before which they cannot.

int ColSphereSphereIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColSphereSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColSphereSphereRegisterInteraction();

int ColSpherePlaneIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColSpherePlaneSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColSpherePlaneRegisterInteraction();

int ColBoxSphereIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColBoxSphereRegisterInteraction();

int ColBoxBoxIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxBoxSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColBoxBoxRegisterInteraction();

int ColBoxPlaneIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxPlaneSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColBoxPlaneRegisterInteraction();

int ColBoxCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColBoxCapsuleRegisterInteraction();

int ColCapsuleCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCapsuleCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColCapsuleCapsuleRegisterInteraction();

int ColCapsuleSphereIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCapsuleSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColCapsuleSphereRegisterInteraction();

int ColCapsulePlaneIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCapsulePlaneRegisterInteraction();

int ColCylinderCapsuleIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCylinderCapsuleSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColCylinderCapsuleRegisterInteraction();

int ColBoxCylinderIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxCylinderSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColBoxCylinderRegisterInteraction();

int ColCylinderCylinderIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCylinderCylinderSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColCylinderCylinderRegisterInteraction();

int ColCylinderPlaneIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCylinderPlaneRegisterInteraction();

int ColCylinderSphereIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCylinderSphereSafeTime(ColModelPair* pair, KitReal maxTime, ColSafeTimeResult* result);
void ColCylinderSphereRegisterInteraction();

int ColConePlaneIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColConePlaneRegisterInteraction();

int ColConeSphereIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColConeSphereRegisterInteraction();

/// Whether a cone touches a box, a cone or a cylinder; such pairs never get contacts.
int ColConeDisjointIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColConeBoxRegisterInteraction();
void ColConeConeRegisterInteraction();
void ColConeCylinderRegisterInteraction();

// With the triangles of a list near the solid.

int ColSphereTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result);
int ColSphereTriangleListPathIntersect(ColModelPair* pair, ColIntersectResult* result,
                                       KitReal time);
void ColSphereTriangleListRegisterInteraction();

int ColBoxTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColBoxTriangleListRegisterInteraction();

int ColCylinderTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCylinderTriangleListRegisterInteraction();

int ColCapsuleTriangleListIntersect(ColModelPair* pair, ColIntersectResult* result);
void ColCapsuleTriangleListRegisterInteraction();
