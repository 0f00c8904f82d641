#pragma once

// All of the layer of bodies, constraints and worlds.

#include <Dyn/DynA1P3Joint.h>
#include <Dyn/DynA2P3Joint.h>
#include <Dyn/DynAngular3.h>
#include <Dyn/DynBSJoint.h>
#include <Dyn/DynBody.h>
#include <Dyn/DynBodyForce.h>
#include <Dyn/DynConeLimit.h>
#include <Dyn/DynConstraint.h>
#include <Dyn/DynConstraintLinks.h>
#include <Dyn/DynContact.h>
#include <Dyn/DynCylindrical.h>
#include <Dyn/DynDistance.h>
#include <Dyn/DynDoubleHinge.h>
#include <Dyn/DynFixedPath.h>
#include <Dyn/DynGenericConstraint.h>
#include <Dyn/DynHinge.h>
#include <Dyn/DynHomokinetic.h>
#include <Dyn/DynInertia.h>
#include <Dyn/DynJointType.h>
#include <Dyn/DynLimit.h>
#include <Dyn/DynLinear.h>
#include <Dyn/DynMotorJoint.h>
#include <Dyn/DynPartition.h>
#include <Dyn/DynPositionAxes.h>
#include <Dyn/DynPrismatic.h>
#include <Dyn/DynUniversal.h>
#include <Dyn/DynUserConstraint.h>
#include <Dyn/DynWorld.h>
#include <Dyn/DynWorldParameters.h>
