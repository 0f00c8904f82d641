#include <Col/ColFrame.h>
#include <Col/ColGeometry.h>
#include <Col/ColInteractions.h>
#include <Col/ColLineSeg.h>
#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include "ColFrameTables.h"

#include <cstdio>
#include <vector>

namespace {
/// Functions by type, or by pair of types: the element of (a, b) stands at b n + a.
struct InteractionTable {
    int n = 0;
    std::vector<ColInteractionTableElement> elements;
    std::vector<ColLineSegIntersectFn> lineSeg;
    std::vector<ColLineSegIntersectListFn> lineSegList;
};

InteractionTable& table() {
    static InteractionTable gColInteractionTable;
    return gColInteractionTable;
}

bool inTable(int type) {
    return type >= 0 && type < table().n;
}

ColInteractionTableElement& element(int type1, int type2) {
    const InteractionTable& t = table();
    return table().elements[static_cast<std::size_t>(type2 * t.n + type1)];
}

/// Whether an interaction may be registered; reports why not.
bool checkTypes(int type1, int type2) {
    ColDefaultInit();
    if (!inTable(type1) || !inTable(type2)) {
        ColMistake(kColErrorInvalidInteraction, "");
        return false;
    }
    if (!ColGeometryTypeIdIsValid(type1) || !ColGeometryTypeIdIsValid(type2)) {
        char pair[32];
        std::snprintf(pair, sizeof(pair), "(%d, %d).", type1, type2);
        ColMistake(kColErrorUnregisteredInteraction, pair);
        return false;
    }
    return true;
}

template <class Fn>
void setDistance(int type1, int type2, Fn ColInteractions::*slot, Fn fn) {
    if (!checkTypes(type1, type2))
        return;
    element(type1, type2).interactions.*slot = fn;
    ColInteractionTableElement& mirrored = element(type2, type1);
    mirrored.interactions.*slot = fn;
    // Without an interaction so far this registration says which order is expected.
    if (type1 != type2 && !element(type1, type2).swap)
        mirrored.swap = 1;
}

/// Order of two models of one type: the smaller sphere first, of equal ones the older model.
bool mustSwapEqualTypes(const ColModel& a, const ColModel& b) {
    lsVec3 centre;
    KitReal radiusA = 0, radiusB = 0;
    ColGeometryGetBSphere(a.mGeometry, &centre, &radiusA);
    ColGeometryGetBSphere(b.mGeometry, &centre, &radiusB);
    return radiusA > radiusB || (!(radiusA < radiusB) && a.serial > b.serial);
}

template <class Fn>
void setLineSeg(std::vector<Fn> InteractionTable::*functions, int type, Fn fn) {
    ColDefaultInit();
    if (inTable(type))
        (table().*functions)[static_cast<std::size_t>(type)] = fn;
    else
        ColMistake(kColErrorInvalidInteraction, "");
}
} // namespace

void ColInteractionTableInit(int dimension) {
    const auto n = static_cast<std::size_t>(dimension);
    table().n = dimension;
    table().elements.assign(n * n, {});
    table().lineSeg.assign(n, nullptr);
    table().lineSegList.assign(n, nullptr);
}

void ColInteractionTableTerm() {
    table() = {};
}

void ColInteractionTableSetElementOfAnyType(int geoType1, int geoType2,
                                            const ColInteractions& interactions,
                                            ColBrokerFn brokerFn) {
    element(geoType1, geoType2) = {0, interactions, brokerFn};
    if (geoType1 != geoType2)
        element(geoType2, geoType1) = {1, interactions, brokerFn};
}

void ColInteractionTableSetElement(int geoType1, int geoType2, const ColInteractions& interactions,
                                   ColBrokerFn brokerFn) {
    if (checkTypes(geoType1, geoType2))
        ColInteractionTableSetElementOfAnyType(geoType1, geoType2, interactions, brokerFn);
}

ColInteractionTableElement* ColInteractionTableGetElementPtr(int geoType1, int geoType2) {
    return inTable(geoType1) && inTable(geoType2) ? &element(geoType1, geoType2) : nullptr;
}

void ColInteractionTableRegisterDistanceFn(int geoType1, int geoType2, ColDistanceFn fn) {
    setDistance(geoType1, geoType2, &ColInteractions::distanceFn, fn);
}

void ColInteractionTableRegisterApproximateDistanceFn(int geoType1, int geoType2,
                                                      ColApproximateDistanceFn fn) {
    setDistance(geoType1, geoType2, &ColInteractions::approxDistanceFn, fn);
}

const ColInteractions* ColInteractionTableGetInteractions(ColModelPair* pair, bool* swap) {
    static constexpr ColInteractions kNone;
    *swap = false;
    if (!ColPairHasGeometries(pair, " in ColInteractionTableGetInteractions."))
        return &kNone;
    const int type1 = pair->model1->mGeometry->mID, type2 = pair->model2->mGeometry->mID;
    if (!inTable(type1) || !inTable(type2)) {
        ColMistake(kColErrorUnknownInteraction, "");
        return &kNone;
    }
    const ColInteractionTableElement& found = element(type1, type2);
    *swap = type1 == type2 && type1 != kColComposite
                ? mustSwapEqualTypes(*pair->model1, *pair->model2)
                : found.swap != 0;
    const ColInteractions* chosen = found.brokerFn ? found.brokerFn(pair) : &found.interactions;
    return chosen ? chosen : &kNone;
}

void ColLineSegRegisterInteraction(int geoType, ColLineSegIntersectFn fn) {
    setLineSeg(&InteractionTable::lineSeg, geoType, fn);
}

void ColLineSegListRegisterInteraction(int geoType, ColLineSegIntersectListFn fn) {
    setLineSeg(&InteractionTable::lineSegList, geoType, fn);
}

ColLineSegIntersectFn ColLineSegGetIntersectFnPtr(int geoType) {
    return inTable(geoType) ? table().lineSeg[static_cast<std::size_t>(geoType)] : nullptr;
}

ColLineSegIntersectListFn ColLineSegGetIntersectListFnPtr(int geoType) {
    return inTable(geoType) ? table().lineSegList[static_cast<std::size_t>(geoType)] : nullptr;
}
