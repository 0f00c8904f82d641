#pragma once
#include <Kit/KitEpsilon.h>
#include <Kit/KitMathFn.h>
#include <Kit/KitMatrix3.h>
#include <Kit/KitMatrix4.h>
#include <Kit/KitQuaternion.h>
#include <Kit/KitVector.h>
