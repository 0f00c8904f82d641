#pragma once
#include <Col/ColRequest.h>
#include <Kit/KitApi.h>

struct ColModelPair;

/// Requests by pair of request ids, one for both orders of the ids.
///
/// The entry of lo <= hi stands at lo size + hi - lo (lo + 1)/2 of the sequence of entries; growing
/// never moves an entry, since pairs point at them.
struct ColuRequestTable {
    int idCount = 0;                      ///< ids that have entries
    int size = 0;                         ///< ids 0 to size - 1
    ColRequest** ididToElement = nullptr; ///< size (size + 1)/2 places of requests
    struct Chunk {
        Chunk* next;
        ColRequest* requests;
    };
    Chunk* chunks = nullptr; ///< the requests themselves, newest first
};

/// The table of the process, or null.
extern HY_API ColuRequestTable* gColuRequestTable;

/// Makes the table of the process, every entry a copy of defaultValue; an earlier table ends first.
/// Null if there is no memory, size is not positive or defaultValue is missing.
HY_API ColuRequestTable* ColuRequestTableInit(int size, const ColRequest* defaultValue);
/// Ends the table of the process, and its call-back if enabled. Pairs that point into it must be
/// gone or have another request.
HY_API void ColuRequestTableTerm();
/// Gives new ids entries of defaultValue; old entries keep their place and value.
/// @return 0 without a table, or without memory, which leaves the table as it was
HY_API int ColuRequestTableResize(int newsize, const ColRequest* defaultValue);
[[nodiscard]] HY_API ColuRequestTable* ColuRequestTableGet();
[[nodiscard]] HY_API int ColuRequestTableGetSize();
/// Entry of two ids. An id beyond the table has the default request.
[[nodiscard]] HY_API ColRequest* ColuRequestTableGetRequestPtr(int id1, int id2);
/// Copies the request into the entry. An id beyond the table gives a warning.
HY_API void ColuRequestTableSetRequest(int id1, int id2, const ColRequest* inRequest);
/// Copies the entry of the pair's models.
HY_API void ColuRequestTableGetRequest(const ColModelPair* pair, ColRequest* outRequest);
/// Lets each ColHello() take the pair's request from the table.
HY_API void ColuRequestTableEnable();
HY_API void ColuRequestTableDisable();
