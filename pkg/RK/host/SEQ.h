// SEQ, the host's lists: records of one size in a row.
#ifndef RK_HOST_SEQ_H
#define RK_HOST_SEQ_H

#include "RK/host/Long.h"

struct SEQ_List;

RK_HOST_API RK_Long SEQ_New(size_t record_bytes, SEQ_List** out);       // 0 or 4
RK_HOST_API RK_Long SEQ_Insert(SEQ_List* list, const void* record);    // at the end; 0 or 4
RK_HOST_API int32_t SEQ_Count(const SEQ_List* list);                   // null counts as empty
RK_HOST_API RK_Long SEQ_Get(const SEQ_List* list, int32_t index, void* record);  // 0 or 3
RK_HOST_API void SEQ_Dispose(SEQ_List* list);                          // null is allowed

RK_HOST_API RK_Long SEQ_CheckVersions(RK_Long caller, RK_Long version);

#endif
