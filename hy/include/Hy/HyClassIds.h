#pragma once

namespace Hy {

// The identity of each class of the high layer. A number, once given, stays with its class: stored
// data and plug-ins know classes by it.

constexpr int kHyBaseClassId = 257;
constexpr int kHyRefCountClassId = 258;
constexpr int kHyFrameClassId = 260;
constexpr int kHyStepperBaseClassId = 261;
constexpr int kHyUniverseClassId = 262;
constexpr int kHyPartClassId = 264;
constexpr int kHyGeometryClassId = 266;
constexpr int kHyConstraintClassId = 267;
constexpr int kHyConstraintControllerClassId = 268;
constexpr int kHyMotorControllerClassId = 269;
constexpr int kHyLockControllerClassId = 270;
constexpr int kHyLockVelocityControllerClassId = 271;
constexpr int kHyLimitMotorControllerClassId = 272;
constexpr int kHyDynamicsContactInputClassId = 276;
constexpr int kHyAngular3ClassId = 279;
constexpr int kHyBallAndSocketClassId = 280;
constexpr int kHyConeConstraintClassId = 281;
constexpr int kHyCarWheelClassId = 282;
constexpr int kHyCylindricalClassId = 283;
constexpr int kHyDifferentialClassId = 284;
constexpr int kHyDistanceJointClassId = 285;
constexpr int kHyDoubleHingeClassId = 286;
constexpr int kHyGearRatioClassId = 287;
constexpr int kHyHingeClassId = 288;
constexpr int kHyLinear1ClassId = 289;
constexpr int kHyLinear2ClassId = 290;
constexpr int kHyLinear3ClassId = 291;
constexpr int kHyPrismaticClassId = 292;
constexpr int kHyScrewJointClassId = 293;
constexpr int kHySpringClassId = 294;
constexpr int kHyUniversalClassId = 295;
constexpr int kHyWheelConstraintClassId = 296;
constexpr int kHyWinchClassId = 297;
constexpr int kHyRPROClassId = 298;
constexpr int kHyBoxClassId = 299;
constexpr int kHyCapsuleClassId = 300;
constexpr int kHyConvexMeshClassId = 301;
constexpr int kHyCylinderClassId = 302;
constexpr int kHyHeightFieldClassId = 303;
constexpr int kHyPlaneClassId = 304;
constexpr int kHySphereClassId = 305;
constexpr int kHyTriangleMeshUVGridClassId = 306;
constexpr int kHyTriangleMeshBVTreeClassId = 307;
constexpr int kHyTriangleBinClassId = 308;
constexpr int kHyDynamicsResponseInputClassId = 318;
constexpr int kHyDynamicsContactClassId = 349;
constexpr int kHyCollisionGeometryClassId = 353;
constexpr int kHyTireModelParamsClassId = 355;
constexpr int kHyTireModelParamsMagicFormulaClassId = 356;
constexpr int kHyTireModelParamsCompositeSlipClassId = 357;
constexpr int kHyTireModelParamsFialaClassId = 358;
constexpr int kHyTireModelParamsSoftTerrainClassId = 359;
constexpr int kHyPressureSinkageParamsClassId = 360;
constexpr int kHyPressureSinkageParamsBekkerClassId = 361;
constexpr int kHyPressureSinkageParamsMuskegClassId = 362;
constexpr int kHyPressureSinkageParamsSnowClassId = 363;
constexpr int kHyShearingParamsClassId = 364;
constexpr int kHyShearingParamsExponentialClassId = 365;
constexpr int kHyShearingParamsHumpClassId = 366;
constexpr int kHyShearingParamsWongClassId = 367;
constexpr int kHyCableClassId = 382;
constexpr int kHyAssemblyClassId = 386;
constexpr int kHyHomokineticClassId = 387;
constexpr int kHyAngular1Position3ClassId = 388;
constexpr int kHyAngular2Position3ClassId = 389;
constexpr int kHyCompositeCollisionGeometryClassId = 404;
constexpr int kHyPressureSinkageParamsWongClassId = 406;
constexpr int kHyMotorConstraintClassId = 407;
constexpr int kHyMotorForceControllerClassId = 409;
constexpr int kHyLevelSetClassId = 411;
constexpr int kHyLevelSetSDFClassId = 412;
constexpr int kHySphereHoleClassId = 413;
constexpr int kHyCylinderHoleClassId = 414;
constexpr int kHyBoxHoleClassId = 415;
constexpr int kHyPressureSinkageParamsReeceClassId = 416;
constexpr int kHyDoubleWinchClassId = 417;
constexpr int kHySumDistanceClassId = 418;
constexpr int kHyContactGearClassId = 419;
constexpr int kHyGenericConstraintClassId = 420;

// Classes that came without a number take the next one from 1000 on.

constexpr int kHyBaseUserDataClassId = 1000;
constexpr int kConstraintPartAttachmentClassId = 1001;
constexpr int kConstraintEquationClassId = 1002;
constexpr int kConstraintCoordinateClassId = 1003;
constexpr int kHyMaterialBaseClassId = 1004;
constexpr int kHyMaterialClassId = 1005;
constexpr int kHyContactMaterialClassId = 1006;
constexpr int kHyProducerPartClassId = 1007;
constexpr int kHyPluginStepperClassId = 1008;
constexpr int kHyDynamicsExtensionClassId = 1009;

} // namespace Hy
