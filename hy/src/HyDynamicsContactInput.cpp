#include <Hy/HyDynamicsContactInput.h>

#include <Dyn/DynContact.h>
#include <Hy/HyDynamicsContact.h>
#include <Hy/HyMessage.h>

namespace Hy {

bool HyDynamicsResponseInput::isOfClassType(int id) const {
    return id == kHyDynamicsResponseInputClassId;
}

bool HyDynamicsResponseInput::isOfExactClassType(int id) const {
    return id == kHyDynamicsResponseInputClassId;
}

HyDynamicsContactInput::DynamicsContactIterator&
HyDynamicsContactInput::DynamicsContactIterator::operator++() {
    if (m_pContact)
        m_pContact = HyDynamicsContact::fromDynContact(m_pContact->getDynContact()->nextContact);
    return *this;
}

HyDynamicsContactInput::DynamicsContactIterator
HyDynamicsContactInput::DynamicsContactIterator::operator++(int) {
    const DynamicsContactIterator before = *this;
    ++*this;
    return before;
}

HyDynamicsContactInput::HyDynamicsContactInput(DynBaseConstraint* firstContact)
    : mContactFirst(HyDynamicsContact::fromDynContact(static_cast<DynContact*>(firstContact))) {}

HyDynamicsContactInput::DynamicsContactIterator
HyDynamicsContactInput::addDuplicateContact(DynamicsContactIterator contact) {
    if (!*contact || !mContactFirst) {
        HyWarning(0, "HyDynamicsContactInput::addDuplicateContact: the iterator must be on a "
                     "contact.\n");
        return dynamicsContactEnd();
    }
    const DynContact& source = *(*contact)->getDynContact();
    DynContact* last = mContactFirst->getDynContact();
    while (last->nextContact)
        last = last->nextContact;
    DynContact* copy = source.world ? DynContactCreate(source.world) : nullptr;
    if (!copy)
        return dynamicsContactEnd();
    static_cast<bclContact&>(*copy) = source; // the point, its material, what bodies it was of
    copy->flags = 0;
    copy->slip_displacement[0] = copy->slip_displacement[1] = 0;
    DynContactSetBodies(copy, source.body[0], source.body[1]);
    DynContactSetSurface(copy, 1);
    DynContactSetWeakContact(copy, kDynWeakNever);
    DynContactSetGroupIndex(copy, last->groupIndex + 1);
    DynContactInsertAfter(last, copy);
    DynConstraintEnable(copy);
    return DynamicsContactIterator(HyDynamicsContact::fromDynContact(copy));
}

} // namespace Hy
