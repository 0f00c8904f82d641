#include "CxTreeSpace.h"

#include <Col/ColMessage.h>
#include <Col/ColModel.h>
#include <Col/ColModelFunctions.h>
#include <Col/ColModelPairContainer.h>
#include <Col/ColSpace.h>
#include <Kit/KitMessage.h>

namespace {

bool inOneSpace(const ColModel* model1, const ColModel* model2) {
    return model1 != nullptr && model2 != nullptr && model1->mSpace != nullptr &&
           model1->mSpace == model2->mSpace;
}

bool canBeRead(const CxSpace* space, const char* function) {
    if (!space->IsChanging())
        return true;
    ColError(gColCoreErrorList, 37, function);
    return false;
}

// Goodbye pairs grow upwards from the start of the array, hello pairs downwards from its middle.
bool takeGoodbyes(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    const auto links = space->GetOldPairOverlapList();
    while (iter->m_g < links.size() && a->goodbyeEnd < a->helloFirst)
        a->array[a->goodbyeEnd++] = &links[iter->m_g++]->mPair;
    return iter->m_g < links.size();
}

bool takeHellos(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    const auto links = space->GetNewPairOverlapList();
    while (iter->m_h < links.size() && a->helloFirst > a->goodbyeEnd) {
        CxPairLink* link = links[iter->m_h++];
        if (space->IsListed(link))
            a->array[--a->helloFirst] = &link->mPair;
    }
    return iter->m_h < links.size();
}

bool bothFrozen(const CxSpace* space, const CxPairLink* link) {
    return !space->GetDynamic(link->mID1) && !space->GetDynamic(link->mID2);
}

bool takeStaying(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    const auto links = space->GetPairOverlapList();
    while (iter->m_s < links.size() && a->stayingEnd < a->frozenFirst) {
        CxPairLink* link = links[iter->m_s++];
        if (space->IsListed(link) && !space->IsResting(link))
            a->array[a->stayingEnd++] = &link->mPair;
    }
    return iter->m_s < links.size();
}

bool takeStayingAndFrozen(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    const auto take = [&](std::span<CxPairLink* const> links, std::size_t& at) {
        while (at < links.size() && a->stayingEnd < a->frozenFirst) {
            CxPairLink* link = links[at++];
            if (!space->IsListed(link))
                continue;
            if (bothFrozen(space, link))
                a->array[--a->frozenFirst] = &link->mPair;
            else
                a->array[a->stayingEnd++] = &link->mPair;
        }
        return at < links.size();
    };
    const bool staying = take(space->GetPairOverlapList(), iter->m_s);
    const bool resting = take(space->GetRestingPairList(), iter->m_f);
    return staying || resting;
}

} // namespace

CxSpace* ColSpaceAxisSortCreate(int axes, int objectCount, int pairCount, bool initPairDisabled) {
    if (axes < 1 || axes > static_cast<int>(ColAllAxes) || objectCount < 1 || pairCount < 1) {
        KitWarning(0, "ColSpaceAxisSortCreate: axes must lie in 1 to 7 and counts be positive.\n");
        return nullptr;
    }
    auto* space = new CxTreeSpace(static_cast<unsigned>(axes), objectCount,
                                  static_cast<std::size_t>(pairCount), initPairDisabled);
    space->SetAABBUpdateFn(ColModelGetPathAABB);
    return space;
}

void ColSpaceDestroy(CxSpace* space) {
    if (space == nullptr)
        return;
    for (int id = 0; id < space->GetEndID(); ++id)
        if (ColModel* model = space->GetRepData(id); model != nullptr) {
            model->mSpace = nullptr;
            model->mSpaceID = -1;
        }
    delete space;
}

int ColSpaceInsertModel(CxSpace* space, ColModel* model) {
    if (space == nullptr || model == nullptr)
        return 0;
    if (model->mSpace != nullptr)
        return model->mSpace == space;
    ColModelUpdate(model);
    const int id =
        space->Insert(model, model->mTemporaryDisabledStatus == kTemporaryDisabledLongTerm);
    if (id < 0)
        return 0;
    model->mSpace = space;
    model->mSpaceID = id;
    return 1;
}

int ColSpaceRemoveModel(ColModel* model) {
    if (model == nullptr || model->mSpace == nullptr)
        return 0;
    model->mSpace->Remove(model->mSpaceID);
    model->mSpace = nullptr;
    model->mSpaceID = -1;
    return 1;
}

int ColSpaceUpdateModel(ColModel* model) {
    if (model == nullptr || model->mSpace == nullptr)
        return 0;
    return model->mSpace->Update(model->mSpaceID, 0);
}

int ColSpacePathUpdateModel(ColModel* model, KitReal duration, int force) {
    if (model == nullptr || model->mSpace == nullptr)
        return 0;
    model->mSpace->UpdateSingle(model->mSpaceID, duration, force != 0);
    return 1;
}

void ColSpaceParkModel(ColModel* model, bool parked) {
    if (model != nullptr && model->mSpace != nullptr)
        model->mSpace->Park(model->mSpaceID, parked);
}

void ColSpaceFreezeModel(ColModel* model) {
    if (model != nullptr && model->mSpace != nullptr)
        model->mSpace->SetDynamic(model->mSpaceID, false);
}

void ColSpaceUnfreezeModel(ColModel* model) {
    if (model != nullptr && model->mSpace != nullptr)
        model->mSpace->SetDynamic(model->mSpaceID, true);
}

bool ColSpaceModelIsFrozen(const ColModel* model) {
    return model != nullptr && model->mSpace != nullptr && ColSpaceModelIsFrozenNoCheck(model);
}

bool ColSpaceModelIsFrozenNoCheck(const ColModel* model) {
    return !model->mSpace->GetDynamic(model->mSpaceID);
}

int ColSpaceGetModelCount(const CxSpace* space) {
    return space->GetSize() - space->GetFree();
}

void ColSpaceModelIteratorBegin(const CxSpace*, ColSpaceModelIterator* it) {
    *it = {};
}

bool ColSpaceGetModel(const CxSpace* space, ColSpaceModelIterator* it, ColModel** model) {
    while (it->it < space->GetEndID()) {
        ColModel* next = space->GetRepData(it->it++);
        if (next == nullptr)
            continue;
        ++it->count;
        *model = next;
        return true;
    }
    return false;
}

int ColSpaceUpdateAll(CxSpace* space) {
    return space->UpdateAll(0);
}
int ColSpacePathUpdateAll(CxSpace* space, KitReal duration) {
    return space->UpdateAll(duration);
}
void ColSpaceBeginChanges(CxSpace* space) {
    space->UpdateBegin();
}
void ColSpaceEndChanges(CxSpace* space) {
    space->UpdateEnd();
}
bool ColSpaceIsChanging(const CxSpace* space) {
    return space->IsChanging();
}
void ColSpaceSetAABBFn(CxSpace* space, BoundsUpdateCb fn) {
    space->SetAABBUpdateFn(fn);
}
void ColSpaceSetUserData(CxSpace* space, void* userData) {
    space->SetData(userData);
}
void* ColSpaceGetUserData(const CxSpace* space) {
    return space->GetData();
}

int ColSpaceEnablePair(ColModel* model1, ColModel* model2) {
    return inOneSpace(model1, model2) &&
           model1->mSpace->SetPairOverlapEnabled(model1->mSpaceID, model2->mSpaceID, true);
}

int ColSpaceDisablePair(ColModel* model1, ColModel* model2) {
    return inOneSpace(model1, model2) &&
           model1->mSpace->SetPairOverlapEnabled(model1->mSpaceID, model2->mSpaceID, false);
}

void ColSpaceSetPairEnableWith(ColModel* model, bool enable) {
    if (model != nullptr && model->mSpace != nullptr)
        model->mSpace->SetPairOverlapEnabled(model->mSpaceID, enable);
}

void ColSpaceSetAllPairsEnable(CxSpace* space, bool enable) {
    if (space)
        space->SetAllPairOverlapEnabled(enable);
}

std::size_t ColSpaceGetPairEnableCount(const CxSpace* space) {
    return space->GetPairOverlapEnabledCount();
}

bool ColSpacePairIsEnabled(const ColModel* model1, const ColModel* model2) {
    return inOneSpace(model1, model2) &&
           model1->mSpace->GetPairOverlapEnabled(model1->mSpaceID, model2->mSpaceID);
}

bool ColSpacePairIsNearby(const ColModel* model1, const ColModel* model2) {
    return inOneSpace(model1, model2) &&
           model1->mSpace->GetPairOverlapStatus(model1->mSpaceID, model2->mSpaceID);
}

ColModelPair* ColSpaceGetModelPair(const ColModel* model1, const ColModel* model2) {
    return inOneSpace(model1, model2) ? model1->mSpace->GetPair(model1->mSpaceID, model2->mSpaceID)
                                      : nullptr;
}

void ColSpaceForgetModel(CxSpace* space, const ColModel* model) {
    if (space != nullptr)
        space->ForgetModel(model);
}

void ColSpacePairIteratorBegin(CxSpace*, ColSpacePairIterator* iter) {
    *iter = {};
}

int ColSpaceGetPairs(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    if (!canBeRead(space, "ColSpaceGetPairs"))
        return 0;
    const bool goodbyes = takeGoodbyes(space, iter, a);
    const bool staying = takeStaying(space, iter, a);
    const bool hellos = takeHellos(space, iter, a);
    return goodbyes || staying || hellos;
}

int ColSpaceGetPairsIncludingFrozen(CxSpace* space, ColSpacePairIterator* iter,
                                    ColModelPairContainer* a) {
    if (!canBeRead(space, "ColSpaceGetPairsIncludingFrozen"))
        return 0;
    const bool goodbyes = takeGoodbyes(space, iter, a);
    const bool staying = takeStayingAndFrozen(space, iter, a);
    const bool hellos = takeHellos(space, iter, a);
    return goodbyes || staying || hellos;
}

int ColSpaceGetTransitions(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a) {
    if (!canBeRead(space, "ColSpaceGetTransitions"))
        return 0;
    const bool goodbyes = takeGoodbyes(space, iter, a);
    const bool hellos = takeHellos(space, iter, a);
    return goodbyes || hellos;
}
