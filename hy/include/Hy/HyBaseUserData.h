#pragma once
#include <Hy/HyBase.h>

namespace Hy {
class HyUserDataContainer;

/// An object to which an application may attach data of its own.
class HY_API HyBaseUserData : public HyClass<kHyBaseUserDataClassId, HyBase> {
public:
    HyBaseUserData() = default;
    ~HyBaseUserData() override;
    const char* getClassName() const override;

    /// The attached data; owned by the object, made on the first call.
    [[nodiscard]] HyUserDataContainer& userData();
    /// The attached data; an empty container where there is none.
    [[nodiscard]] const HyUserDataContainer& userData() const;

    /// Attaches a pointer that the object stores and never touches.
    void setUserDataPtr(void* pointer) { mUserDataPtr = pointer; }
    [[nodiscard]] void* getUserDataPtr() const { return mUserDataPtr; }

private:
    HyUserDataContainer* mUserData = nullptr;
    void* mUserDataPtr = nullptr;
};

} // namespace Hy
