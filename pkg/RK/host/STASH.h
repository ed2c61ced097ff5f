// STASH, the host's media cache: a keyed store whose entries may be purged, and kept in a disk folder.
#ifndef RK_HOST_STASH_H
#define RK_HOST_STASH_H

#include "RK/host/DSK.h"
#include "RK/host/KIT.h"

struct STASH_Bag;      // what is counted and evicted together
struct STASH_SortDir;  // a sorted directory of entries

// An entry. Virtual operations in slot order; those that fail throw an RK_Long.
class RK_HOST_API STASH_Stuff : public KIT_MemTrackedObject {
  public:
    STASH_Stuff() = default;
    virtual ~STASH_Stuff();
    STASH_Stuff(const STASH_Stuff&) = delete;
    STASH_Stuff& operator=(const STASH_Stuff&) = delete;

    virtual bool IsLess(const STASH_Stuff& other) const = 0;
    virtual int32_t SizeInBytes() const = 0;
    // Lets go of the contents; true if there were any. The entry may be read from the disk later.
    virtual bool Purge() = 0;
    virtual bool IsOnDisk() const;
    virtual bool IsLoaded() const = 0;
    virtual bool CanWriteToDisk() const = 0;
    virtual void WriteToDisk(DSK_File* file) const = 0;
    // A file that is cut or damaged throws and leaves the entry without contents.
    virtual void ReadFromDisk(DSK_File* file) = 0;
    virtual void DeletedDiskFile();

    // What names the entry in a folder from one run to the next: at most `room` bytes; gives how many.
    virtual size_t DiskIdentity(uint8_t* bytes, size_t room) const = 0;
    // An entry with the same key and no contents; null when memory is short.
    virtual STASH_Stuff* NewLike() const = 0;

    // Hands the entry to the cache, whether it succeeds or not: 0, or 4 when memory is short, the entry being deleted
    // then. `cost` is what it took to make, in ticks; cheap and large entries go first. An entry of the same key is
    // replaced.
    RK_Long AddToBagAndSortDir(STASH_Bag* bag, uint32_t cost, STASH_SortDir* dir);

  private:
    friend struct STASH_Access;
    bool on_disk_ = false;
};

// Holds an entry for the life of the object: nothing purges it meanwhile.
class RK_HOST_API STASH_ScCheckout {
  public:
    STASH_ScCheckout() = default;
    ~STASH_ScCheckout();
    STASH_ScCheckout(const STASH_ScCheckout&) = delete;
    STASH_ScCheckout& operator=(const STASH_ScCheckout&) = delete;
    // Looks for the entry equal to the key, on the disk too; a damaged file is reported, deleted, and a miss. The two
    // numbers are the caller's wishes, which this interface leaves to the host.
    void FindAndCheckout(STASH_SortDir* dir, const STASH_Stuff& key, int32_t kind, int32_t options);
    bool DidCheckout() const { return stuff_ != nullptr; }
    STASH_Stuff* GetStuff() const { return stuff_; }

  private:
    STASH_Stuff* stuff_ = nullptr;
};

RK_HOST_API STASH_Bag* STASH_GlobalBag();
// `name` tells the directory apart in a disk folder; the empty name keeps its entries in memory only. Null when memory
// is short.
RK_HOST_API STASH_SortDir* STASH_NewSortDir(const char* name);
// Deletes the directory and its entries; files stay.
RK_HOST_API void STASH_DisposeSortDir(STASH_SortDir* dir);

#endif
