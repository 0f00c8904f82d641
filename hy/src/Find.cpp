#include <Hy/Find.h>

#include <Hy/HyCollisionGeometry.h>
#include <Hy/HyConstraint.h>
#include <Hy/HyDynamicsExtension.h>
#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

namespace Hy::Find {

namespace {

/// The objects of one kind in a universe.
template <class Object>
using Members = const HyWalkedObjects<Object>& (HyUniverse::*)() const;

template <class Object>
Object* findIn(const HyUniverse* universe, Members<Object> members, const std::string& name,
               const char* operation) {
    if (!universe) {
        HyWarning(0, "Find::%s: universe must not be null.\n", operation);
        return nullptr;
    }
    for (Object* object : (universe->*members)())
        if (object->getName() == name)
            return object;
    return nullptr;
}

template <class Object>
Object* findInFrame(Members<Object> members, const std::string& name) {
    const HyFrame* frame = HyFrame::currentInstance();
    for (int i = 0; frame && i < frame->getUniverseCount(); ++i)
        if (Object* found = findIn(frame->getUniverse(i), members, name, ""))
            return found;
    return nullptr;
}

} // namespace

HyPart* part(const std::string& name) {
    return findInFrame<HyPart>(&HyUniverse::getParts, name);
}

HyPart* part(const std::string& name, const HyUniverse* universe) {
    return findIn<HyPart>(universe, &HyUniverse::getParts, name, "part");
}

HyConstraint* constraint(const std::string& name) {
    return findInFrame<HyConstraint>(&HyUniverse::getConstraints, name);
}

HyConstraint* constraint(const std::string& name, const HyUniverse* universe) {
    return findIn<HyConstraint>(universe, &HyUniverse::getConstraints, name, "constraint");
}

HyCollisionGeometry* collisionGeometry(const std::string& name) {
    return findInFrame<HyCollisionGeometry>(&HyUniverse::getCollisionGeometries, name);
}

HyCollisionGeometry* collisionGeometry(const std::string& name, const HyUniverse* universe) {
    return findIn<HyCollisionGeometry>(universe, &HyUniverse::getCollisionGeometries, name,
                                       "collisionGeometry");
}

HyDynamicsExtension* extension(const std::string& name) {
    return findInFrame<HyDynamicsExtension>(&HyUniverse::getExtensions, name);
}

HyDynamicsExtension* extension(const std::string& name, const HyUniverse* universe) {
    return findIn<HyDynamicsExtension>(universe, &HyUniverse::getExtensions, name, "extension");
}

} // namespace Hy::Find
