#pragma once
#include <string>

namespace Hy::HyPluginSystem {
struct PluginLibraryData;

/// The code of an open library, and whose objects live by it.
class PluginImage {
public:
    /// @param data open, and not static
    explicit PluginImage(const PluginLibraryData& data);

    [[nodiscard]] const std::string& getPath() const { return mPath; }
    /// Whether the class of an object is the library's own.
    /// @param object has virtual functions, and is alive
    template <class Object>
    [[nodiscard]] bool isClassOf(const Object* object) const {
        // By the ABI, such an object begins with the address of its class's table.
        return holds(*reinterpret_cast<const void* const*>(object));
    }
    /// Lets the library stay in memory though it is closed.
    void keep() const;

private:
    [[nodiscard]] bool holds(const void* address) const;

    const std::string& mPath;
    void* mLibrary = nullptr; ///< the linker's record of it
};

} // namespace Hy::HyPluginSystem
