#pragma once
// Everything of this layer, for applications.

#include <Col/ColCompositeGeometry.h>
#include <Col/ColCompositeModel.h>
#include <Col/ColContact.h>
#include <Col/ColEach.h>
#include <Col/ColFrame.h>
#include <Col/ColGeometry.h>
#include <Col/ColInteractions.h>
#include <Col/ColIntersect.h>
#include <Col/ColIntersectResult.h>
#include <Col/ColLineSeg.h>
#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColModelPair.h>
#include <Col/ColModelPairContainer.h>
#include <Col/ColPathIntersect.h>
#include <Col/ColRequest.h>
#include <Col/ColScratch.h>
#include <Col/ColSimplify.h>
#include <Col/ColSpace.h>
#include <Col/ColTriangleList.h>
#include <Col/ColuRequestTable.h>
#include <Col/CxTriangleNE.h>
