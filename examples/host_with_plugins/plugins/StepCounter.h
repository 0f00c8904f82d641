#pragma once
#include <Hy/HyPluginManager.h>

/// What the plug-in "stepper" puts into the pool for the host to find.
class StepCounter : public Hy::HyPluginSystem::HyPluginObject {
public:
    [[nodiscard]] virtual int getSteps() const = 0;
    [[nodiscard]] virtual double getTime() const = 0; ///< s
};
