#include <Hy/Find.h>

#include <Hy/HyConstraint.h>
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

template <class Search>
auto firstInFrame(const std::string& name, Search search) -> decltype(search(name, nullptr)) {
    const HyFrame* frame = HyFrame::currentInstance();
    for (int i = 0; frame && i < frame->getUniverseCount(); ++i)
        if (auto* found = search(name, frame->getUniverse(i)))
            return found;
    return nullptr;
}

} // namespace

HyPart* part(const std::string& name) {
    return firstInFrame(name, [](const std::string& wanted, const HyUniverse* universe) {
        return part(wanted, universe);
    });
}

HyPart* part(const std::string& name, const HyUniverse* universe) {
    if (universe)
        return firstOfName(universe->getParts(), name);
    HyWarning(0, "Find::part: universe must not be null.\n");
    return nullptr;
}

HyConstraint* constraint(const std::string& name) {
    return firstInFrame(name, [](const std::string& wanted, const HyUniverse* universe) {
        return constraint(wanted, universe);
    });
}

HyConstraint* constraint(const std::string& name, const HyUniverse* universe) {
    if (universe)
        return firstOfName(universe->getConstraints(), name);
    HyWarning(0, "Find::constraint: universe must not be null.\n");
    return nullptr;
}

} // namespace Hy::Find
