// SEQ, the host's lists: records of one size in a row.
#ifndef RK_HOST_SEQ_H
#define RK_HOST_SEQ_H

#include "RK/host/Long.h"

struct SEQ_List;

RK_HOST_API RK_Long SEQ_New(size_t record_bytes, SEQ_List** out);       // 0 or 4
// With room for `room` records at once; when that is full it grows by `growth` of them at a time. 0, 3 or 4.
RK_HOST_API RK_Long SEQ_NewSized(size_t record_bytes, int32_t room, int32_t growth, SEQ_List** out);
RK_HOST_API RK_Long SEQ_Insert(SEQ_List* list, const void* record);    // at the end; 0 or 4
RK_HOST_API int32_t SEQ_Count(const SEQ_List* list);                   // null counts as empty
RK_HOST_API RK_Long SEQ_Get(const SEQ_List* list, int32_t index, void* record);  // 0 or 3
// The list has `count` records after it: the first ones it had, and zeroed ones. 0, or 3 or 4 and it stays as it was.
RK_HOST_API RK_Long SEQ_SetCount(SEQ_List* list, int32_t count);
// The records in their row, until the list changes; null when there are none.
RK_HOST_API void* SEQ_Records(SEQ_List* list);
// Null is allowed. A failure is told after the list is gone all the same.
RK_HOST_API RK_Long SEQ_Dispose(SEQ_List* list);

RK_HOST_API RK_Long SEQ_CheckVersions(RK_Long caller, RK_Long version);

#endif
