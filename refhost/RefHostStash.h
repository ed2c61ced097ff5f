// What a program may set and ask of the reference host's media cache.
#ifndef REFHOST_STASH_H
#define REFHOST_STASH_H

#include <string>

#include "RK/host/STASH.h"

namespace RefHost {

struct StashUse {
    int64_t entries, bytes;  // loaded ones
    int64_t hits, misses;    // of all lookups so far
    int64_t disk_reads, disk_writes, damaged, evicted;
};
RK_HOST_API StashUse Stash();

// Entries are evicted while they hold more than this: cheap and large ones first, then old ones; never one that is
// checked out. 512 MiB at first.
RK_HOST_API void SetStashLimit(int64_t bytes);
// Entries that can be written go to this folder, made if need be, when they are added. Empty: memory only.
RK_HOST_API void SetStashFolder(const std::string& folder);
// Purges every entry that is not checked out.
RK_HOST_API void PurgeStash();

}  // namespace RefHost

#endif
