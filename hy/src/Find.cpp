#include <Hy/Find.h>

#include <Hy/HyFrame.h>
#include <Hy/HyMessage.h>
#include <Hy/HyPart.h>
#include <Hy/HyUniverse.h>

namespace Hy::Find {

namespace {

template <class Collection>
typename Collection::value_type firstOfName(const Collection& objects, const std::string& name) {
    for (const auto object : objects)
        if (object->getName() == name)
            return object;
    return nullptr;
}

} // namespace

HyPart* part(const std::string& name) {
    const HyFrame* frame = HyFrame::currentInstance();
    for (int i = 0; frame && i < frame->getUniverseCount(); ++i)
        if (HyPart* found = part(name, frame->getUniverse(i)))
            return found;
    return nullptr;
}

HyPart* part(const std::string& name, const HyUniverse* universe) {
    if (universe)
        return firstOfName(universe->getParts(), name);
    HyWarning(0, "Find::part: universe must not be null.\n");
    return nullptr;
}

} // namespace Hy::Find
