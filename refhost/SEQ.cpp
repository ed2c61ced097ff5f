// Lists: records of one size in one growing block.
#include "RK/host/SEQ.h"

#include <algorithm>
#include <cstring>

#include "refhost/Internal.h"

struct SEQ_List {
    size_t record_bytes;
    int32_t count;
    int32_t room;
    int32_t growth;    // 0: twice the room, 4 at least
    uint8_t* records;  // null while there is no room
};

namespace {

RK_Long makeRoom(SEQ_List* list, int32_t room) {
    if (room <= list->room) return 0;
    if (static_cast<size_t>(room) > SIZE_MAX / list->record_bytes) return 4;
    const size_t bytes = static_cast<size_t>(room) * list->record_bytes;
    void* grown = list->records ? RefHost::ResizeBlock(list->records, bytes) : RefHost::AllocateBlock(bytes);
    if (!grown) return 4;
    list->records = static_cast<uint8_t*>(grown);
    list->room = room;
    return 0;
}

}  // namespace

RK_Long SEQ_New(size_t record_bytes, SEQ_List** out) {
    if (!out || record_bytes == 0) return 3;
    *out = nullptr;
    if (const RK_Long code = RefHost::FailingCall("SEQ_New")) return code;
    SEQ_List* list = static_cast<SEQ_List*>(RefHost::AllocateBlock(sizeof(SEQ_List)));
    if (!list) return 4;
    *list = {record_bytes, 0, 0, 0, nullptr};
    *out = list;
    return 0;
}

RK_Long SEQ_NewSized(size_t record_bytes, int32_t room, int32_t growth, SEQ_List** out) {
    if (room < 0 || growth < 1) return 3;
    if (const RK_Long code = SEQ_New(record_bytes, out)) return code;
    (*out)->growth = growth;
    const RK_Long code = makeRoom(*out, room);
    if (code == 0) return 0;
    SEQ_Dispose(*out);
    *out = nullptr;
    return code;
}

RK_Long SEQ_Insert(SEQ_List* list, const void* record) {
    if (!list || !record) return 3;
    if (list->count == list->room) {
        const int64_t room = int64_t{list->room} + (list->growth > 0 ? list->growth : std::max(4, list->room));
        if (room > INT32_MAX) return 4;
        if (const RK_Long code = makeRoom(list, static_cast<int32_t>(room))) return code;
    }
    std::memcpy(list->records + static_cast<size_t>(list->count) * list->record_bytes, record,
                list->record_bytes);
    ++list->count;
    return 0;
}

int32_t SEQ_Count(const SEQ_List* list) { return list ? list->count : 0; }

RK_Long SEQ_Get(const SEQ_List* list, int32_t index, void* record) {
    if (!record || index < 0 || index >= SEQ_Count(list)) return 3;
    std::memcpy(record, list->records + static_cast<size_t>(index) * list->record_bytes, list->record_bytes);
    return 0;
}

RK_Long SEQ_SetCount(SEQ_List* list, int32_t count) {
    if (!list || count < 0) return 3;
    if (const RK_Long code = makeRoom(list, count)) return code;
    if (count > list->count) {
        const auto had = static_cast<size_t>(list->count), now = static_cast<size_t>(count);
        std::memset(list->records + had * list->record_bytes, 0, (now - had) * list->record_bytes);
    }
    list->count = count;
    return 0;
}

void* SEQ_Records(SEQ_List* list) { return SEQ_Count(list) > 0 ? list->records : nullptr; }

RK_Long SEQ_Dispose(SEQ_List* list) {
    if (!list) return 0;
    if (list->records) RefHost::FreeBlock(list->records);
    RefHost::FreeBlock(list);
    return RefHost::FailingCall("SEQ_Dispose");
}

RK_Long SEQ_CheckVersions(RK_Long, RK_Long version) { return RefHost::CheckPackage("SEQ", version); }
