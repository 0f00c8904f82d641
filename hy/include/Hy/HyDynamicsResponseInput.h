#pragma once
#include <Hy/HyClassIds.h>
#include <Kit/KitApi.h>

#include <array>

namespace Hy {

/// What a response hands to the subscribers of its pair; see the derived classes.
class HY_API HyDynamicsResponseInput {
public:
    static constexpr std::array<int, 1> kIDVector{kHyDynamicsResponseInputClassId};
    [[nodiscard]] static constexpr int getStaticClassType() {
        return kHyDynamicsResponseInputClassId;
    }

    virtual ~HyDynamicsResponseInput() = default;
    /// Whether the object is of the class with this identity or of one derived from it.
    [[nodiscard]] virtual bool isOfClassType(int id) const;
    /// Whether the object is of the class with this identity itself.
    [[nodiscard]] virtual bool isOfExactClassType(int id) const;
};

} // namespace Hy
