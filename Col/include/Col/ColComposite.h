#pragma once
// Composites: the geometry and the models of it.

#include <Col/ColCompositeGeometry.h>
#include <Col/ColCompositeModel.h>
