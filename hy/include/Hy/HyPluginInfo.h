#pragma once
#include <Hy/HyArray.h>
#include <Hy/HyVersion.h>
#include <Kit/KitApi.h>

#include <string>

namespace Hy::HyPluginSystem {
class HyPluginInfo;

/// That a plug-in needs another.
class HY_API HyDependency {
public:
    /// @param name identity of the other plug-in, case and all
    /// @param version which that one must be able to stand in for
    HyDependency(const std::string& name, const HyVersion& version)
        : mName(name), mVersion(version) {}

    [[nodiscard]] const std::string& getName() const { return mName; }
    [[nodiscard]] const HyVersion& getVersion() const { return mVersion; }
    [[nodiscard]] bool operator==(const HyDependency& other) const {
        return mName == other.mName && mVersion == other.mVersion;
    }

private:
    friend class HyPluginManager;

    std::string mName;
    HyVersion mVersion;
    HyPluginInfo* mResolved = nullptr; ///< found by the manager; may be gone, see findDependency()
};

/// What a plug-in tells of itself, in GetPluginInfo().
class HY_API HyPluginInfo {
public:
    /// @param path of the file, or the pseudo-path of a static plug-in
    explicit HyPluginInfo(const std::string& path = std::string()) : mPath(path) {}

    /// Identity, not empty. Once the plug-in is initialized it is the base name of its file; plug-ins
    /// that depend on it may go on to use the name that it gave itself.
    [[nodiscard]] const std::string& getName() const { return mName; }
    void setName(const std::string& name) { mName = name; }
    /// Name for people; the identity where none was set.
    [[nodiscard]] const std::string& getDisplayName() const {
        return mDisplayName.empty() ? mName : mDisplayName;
    }
    void setDisplayName(const std::string& name) { mDisplayName = name; }
    [[nodiscard]] const std::string& getDescription() const { return mDescription; }
    void setDescription(const std::string& text) { mDescription = text; }
    [[nodiscard]] const std::string& getVendor() const { return mVendor; }
    void setVendor(const std::string& text) { mVendor = text; }
    [[nodiscard]] const std::string& getCopyright() const { return mCopyright; }
    void setCopyright(const std::string& text) { mCopyright = text; }
    [[nodiscard]] const std::string& getURL() const { return mURL; }
    void setURL(const std::string& text) { mURL = text; }
    [[nodiscard]] const std::string& getGroup() const { return mGroup; }
    void setGroup(const std::string& text) { mGroup = text; }

    /// The manager sets path and kind again after the plug-in has told of itself.
    [[nodiscard]] const std::string& getPath() const { return mPath; }
    void setPath(const std::string& path) { mPath = path; }
    /// Whether it is linked into the program.
    [[nodiscard]] bool isStatic() const { return mIsStatic; }
    void setStatic(bool on) { mIsStatic = on; }

    [[nodiscard]] const HyVersion& getVersion() const { return mVersion; }
    void setVersion(const HyVersion& version) { mVersion = version; }
    /// The oldest version that it can stand in for.
    [[nodiscard]] const HyVersion& getCompatibilityVersion() const { return mCompatibilityVersion; }
    void setCompatibilityVersion(const HyVersion& version) { mCompatibilityVersion = version; }

    /// What it needs, in the order of adding.
    [[nodiscard]] const HyArray<HyDependency>& getDependencies() const { return mDependencies; }
    /// Adds one; nothing if it is here already.
    void addDependency(const HyDependency& dependency) { mDependencies.addUnique(dependency); }
    /// Whether it was here.
    bool removeDependency(const HyDependency& dependency) {
        return mDependencies.eraseOnce(dependency);
    }
    /// Forgets everything.
    void clear() { *this = HyPluginInfo(); }

private:
    friend class HyPluginManager;

    std::string mName, mDisplayName, mDescription, mVendor, mCopyright, mURL, mGroup, mPath;
    std::string mDeclaredName; ///< that the plug-in gave itself
    HyVersion mVersion{0, 0, 0};
    HyVersion mCompatibilityVersion{0, 0, 0};
    HyArray<HyDependency> mDependencies;
    bool mIsStatic = false;
};

} // namespace Hy::HyPluginSystem
