#pragma once
#include <Col/ColInteractions.h>

struct ColModelPair;

// The tables that ColInit() builds and ColTerm() takes down.

void ColGeometryTablesInit(int capacity);
void ColGeometryTablesTerm();
void ColInteractionTableInit(int dimension);
void ColInteractionTableTerm();
void ColDefaultRequestInit();

/// ColInteractionTableSetElement() for numbers in range, whether or not the types are registered
/// yet: a composite may hold children of any type.
void ColInteractionTableSetElementOfAnyType(int geoType1, int geoType2,
                                            const ColInteractions& interactions,
                                            ColBrokerFn brokerFn);
/// Whether the pair has two models with geometries; reports what is missing.
[[nodiscard]] bool ColPairHasGeometries(const ColModelPair* pair, const char* caller);
