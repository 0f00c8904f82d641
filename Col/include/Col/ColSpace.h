#pragma once
#include <Col/CxSpace.h>
#include <Kit/KitApi.h>
#include <Kit/KitTypes.h>
#include <Kit/lsVec3.h>

#include <cstddef>

struct ColLineSegIntersectResult;
struct ColModel;
struct ColModelPair;
struct ColModelPairContainer;
namespace Hy {
class HyLineSegIntersectSub;
}

/// Mask of all three axes.
constexpr unsigned ColAllAxes = 7;

/// Where a walk over the models of a space stands.
struct ColSpaceModelIterator {
    int it = 0;    ///< next id
    int count = 0; ///< models seen
};

/// Where a walk over the pairs of a space stands.
struct ColSpacePairIterator {
    std::size_t m_h = 0; ///< in the new list
    std::size_t m_s = 0; ///< in the active list
    std::size_t m_g = 0; ///< in the old list
    std::size_t m_f = 0; ///< in the list at rest
};

/// A broad phase that takes boxes from ColModelGetPathAABB() and starts in a change interval. The
/// caller destroys it, after its models were removed.
/// @param axes 1 to 7, the mask of axes that count: 1 x, 2 y, 4 z
/// @param objectCount,pairCount room at the start, positive; both grow
/// @return null for anything else, with a warning
[[nodiscard]] HY_API CxSpace* ColSpaceAxisSortCreate(int axes, int objectCount, int pairCount,
                                                     bool initPairDisabled);
/// Destroys a space; models that are still in it are let go.
HY_API void ColSpaceDestroy(CxSpace* space);

/// Brings the model's transform up to date and puts the model in; parked if it is disabled for a long
/// term. 1 if it is in the space then, 0 if another one holds it or there is no memory.
HY_API int ColSpaceInsertModel(CxSpace* space, ColModel* model);
/// 0 without a space. The pairs of the model come out as goodbyes of the next interval.
HY_API int ColSpaceRemoveModel(ColModel* model);
/// Takes the model's box anew. The change interval stays as it was, open or closed; closed, the pairs
/// change in the next one.
HY_API int ColSpaceUpdateModel(ColModel* model);
/// Opens an interval if need be and takes the model's box along its motion; `force` includes a frozen
/// model. Leaves the interval open.
HY_API int ColSpacePathUpdateModel(ColModel* model, KitReal duration, int force);
HY_API void ColSpaceParkModel(ColModel* model, bool parked);
/// A frozen model keeps its box and pairs, and the update of all models passes it over.
HY_API void ColSpaceFreezeModel(ColModel* model);
HY_API void ColSpaceUnfreezeModel(ColModel* model);
/// False for a model in no space.
[[nodiscard]] HY_API bool ColSpaceModelIsFrozen(const ColModel* model);
/// The same for a model that is known to be in a space.
[[nodiscard]] HY_API bool ColSpaceModelIsFrozenNoCheck(const ColModel* model);
[[nodiscard]] HY_API int ColSpaceGetModelCount(const CxSpace* space);
HY_API void ColSpaceModelIteratorBegin(const CxSpace* space, ColSpaceModelIterator* it);
/// The next model by id; false at the end.
HY_API bool ColSpaceGetModel(const CxSpace* space, ColSpaceModelIterator* it, ColModel** model);

/// ColSpacePathUpdateAll() with duration 0.
HY_API int ColSpaceUpdateAll(CxSpace* space);
/// Takes the boxes of all models that are not frozen along their motion. Neither opens nor closes a
/// change interval.
HY_API int ColSpacePathUpdateAll(CxSpace* space, KitReal duration);
HY_API void ColSpaceBeginChanges(CxSpace* space);
HY_API void ColSpaceEndChanges(CxSpace* space);
[[nodiscard]] HY_API bool ColSpaceIsChanging(const CxSpace* space);
HY_API void ColSpaceSetAABBFn(CxSpace* space, BoundsUpdateCb fn);
HY_API void ColSpaceSetUserData(CxSpace* space, void* userData);
[[nodiscard]] HY_API void* ColSpaceGetUserData(const CxSpace* space);

/// 0 if nothing can change now: models of no or different spaces, one model twice, or a pair in
/// transition. Outside a change interval the pair begins or ends in the next one.
HY_API int ColSpaceEnablePair(ColModel* model1, ColModel* model2);
HY_API int ColSpaceDisablePair(ColModel* model1, ColModel* model2);
HY_API void ColSpaceSetPairEnableWith(ColModel* model, bool enable);
/// All pairs of the models that are in the space now.
HY_API void ColSpaceSetAllPairsEnable(CxSpace* space, bool enable);
[[nodiscard]] HY_API std::size_t ColSpaceGetPairEnableCount(const CxSpace* space);
[[nodiscard]] HY_API bool ColSpacePairIsEnabled(const ColModel* model1, const ColModel* model2);
/// Whether the boxes overlap, as of the last interval.
[[nodiscard]] HY_API bool ColSpacePairIsNearby(const ColModel* model1, const ColModel* model2);
/// Null if the models do not overlap.
[[nodiscard]] HY_API ColModelPair* ColSpaceGetModelPair(const ColModel* model1,
                                                        const ColModel* model2);
/// Clears a model that is about to die from records that wait for their goodbye.
HY_API void ColSpaceForgetModel(CxSpace* space, const ColModel* model);

HY_API void ColSpacePairIteratorBegin(CxSpace* space, ColSpacePairIterator* iter);
/// Fills the zones of a container that was reset with goodbye, staying and hello pairs, as far as it
/// has room; 1 if pairs are left for another call with the container reset. Pairs at rest, of two
/// frozen models of which none is disabled for a short term, are passed over. Inside a change
/// interval: error 37 and 0.
HY_API int ColSpaceGetPairs(CxSpace* space, ColSpacePairIterator* iter, ColModelPairContainer* a);
/// The same, with the pairs of two frozen models in the frozen zone.
HY_API int ColSpaceGetPairsIncludingFrozen(CxSpace* space, ColSpacePairIterator* iter,
                                           ColModelPairContainer* a);
/// The goodbye and hello pairs alone.
HY_API int ColSpaceGetTransitions(CxSpace* space, ColSpacePairIterator* iter,
                                  ColModelPairContainer* a);

/// Nearest hit of a segment with the enabled models of a space, of equally near ones that with the
/// oldest model; see ColLineSegIntersect(). A plane that is hit from below counts with the magnitude
/// of its distance. Models that moved since their boxes were taken may be missed:
/// ColSpaceUpdateAll() before a series of queries takes them anew.
/// @param result its anyHit ends the search at the first hit found
/// @param subscriber asked for each model near the segment and for children of composites, in no
/// particular order, not owned, may be null
/// @return 0 for no hit
HY_API int ColSpaceLineSegIntersect(const CxSpace* space, const lsVec3& start, const lsVec3& end,
                                    ColLineSegIntersectResult* result,
                                    Hy::HyLineSegIntersectSub* subscriber);
