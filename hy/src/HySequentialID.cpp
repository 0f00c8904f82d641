#include <Hy/HySequentialID.h>

#include <Hy/HyMessage.h>

#include <algorithm>

namespace Hy {

template class HySequentialIDGenerator<HySequentialID>;

SequentialIDInternalData::SequentialIDInternalData() {
    mNames.push_back(HyID());
}

int SequentialIDInternalData::create(const char* name) {
    if (!name) {
        HyWarning(0, "Trying to create a sequential ID with a NULL name.\n");
        return 0;
    }
    if (exist(name)) {
        HyWarning(0, "Cannot create a sequential ID '%s'. The name is already in use.\n", name);
        return 0;
    }
    mNames.push_back(HyID(name));
    return getIDCount() - 1;
}

std::string SequentialIDInternalData::getName(int id) const {
    if (id < 0 || id >= getIDCount()) {
        HyWarning(0, "Cannot get the name from an unknown ID (%d).\n", id);
        return "Unknown ID";
    }
    return mNames[static_cast<std::size_t>(id)].asString();
}

bool SequentialIDInternalData::exist(const char* name) const {
    return name && std::any_of(mNames.begin(), mNames.end(),
                               [&](const HyID& id) { return id.asString() == name; });
}

} // namespace Hy
