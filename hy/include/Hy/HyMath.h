#pragma once
#include <Hy/HyEulerAngles.h>
#include <Hy/HyEulerOrder.h>
#include <Hy/HyQuaternion.h>
#include <Hy/HySmallReal.h>
#include <Hy/HyTransform.h>
#include <Hy/HyVector3.h>
