#pragma once
// The high layer, for applications.
#include <Hy/HyFrame.h>
#include <Hy/HyFrameLock.h>
#include <Hy/HyFrameStepperOption.h>
#include <Hy/HyMassProperties.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyPartState.h>
#include <Hy/HyPointer.h>
#include <Hy/HyThreadPool.h>
#include <Hy/HyTimer.h>
#include <Hy/HyTransform.h>
#include <Hy/HyUniverse.h>
#include <Hy/HyUniverseObserver.h>
#include <Hy/HyUniverseState.h>
#include <Hy/HyVector3.h>
