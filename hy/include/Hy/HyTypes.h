#pragma once
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>

namespace Hy {
/// Every simulated quantity is a 64-bit IEEE float, in SI units unless a name says otherwise.
using HyReal = KitReal;
} // namespace Hy
