// The media cache: sorted directories in memory, a limit on size, a disk folder.
#include "RK/host/STASH.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <new>
#include <vector>

#include "refhost/Internal.h"
#include "refhost/RefHostStash.h"

struct STASH_Bag {};

namespace {

struct Entry {
    STASH_Stuff* stuff;
    uint32_t cost;
    int64_t last_use;
    int32_t checkouts;
};

}  // namespace

struct STASH_SortDir {
    std::string name;
    std::vector<Entry> entries;  // in the entries' own order
};

// What the cache may do to an entry that others may not.
struct STASH_Access {
    static void SetOnDisk(STASH_Stuff* stuff, bool on) { stuff->on_disk_ = on; }
};

namespace {

// Behind the entry's own bytes in its file.
struct Footer {
    uint32_t magic, cost;
    uint64_t count, checksum;
};
constexpr uint32_t kMagic = 0x54534B52;

// One lock over everything: the cache is called from the threads that render, seldom and briefly. Entries call back
// into files and memory only.
std::recursive_mutex g_lock;
std::vector<STASH_SortDir*> g_dirs;
STASH_Bag g_bag;
std::string g_folder;
int64_t g_limit = int64_t{512} << 20, g_clock = 0;
RefHost::StashUse g_use{};

using Hold = std::lock_guard<std::recursive_mutex>;

// Empty when the entry is not kept on a disk.
std::string PathOf(const STASH_SortDir& dir, const STASH_Stuff& stuff) {
    if (g_folder.empty() || dir.name.empty() || !stuff.CanWriteToDisk()) return {};
    uint8_t bytes[64];
    const size_t count = stuff.DiskIdentity(bytes, sizeof bytes);
    if (count == 0) return {};
    static const char kHex[] = "0123456789abcdef";
    std::string name;
    for (const char c : dir.name) name += (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' ? c : '_';
    name += '-';
    for (size_t i = 0; i < count; ++i) name += {kHex[bytes[i] >> 4], kHex[bytes[i] & 15]};
    return g_folder + "/" + name + ".stash";
}

// Runs work(), which may throw a code or a std::exception; gives the code.
template <class Work>
RK_Long CodeOf(Work&& work) {
    try {
        work();
        return 0;
    } catch (RK_Long code) {
        return code;
    } catch (const std::bad_alloc&) {
        return 4;
    } catch (const std::exception&) {
        return 3;
    }
}

void WriteEntry(const STASH_SortDir& dir, const Entry& entry) {
    const std::string path = PathOf(dir, *entry.stuff);
    if (path.empty()) return;
    std::error_code ignored;  // a folder that cannot be made shows when the file cannot
    std::filesystem::create_directories(g_folder, ignored);
    DSK_File* file = nullptr;
    RK_Long code = DSK_CreateWhole(path.c_str(), &file);
    if (code == 0) {
        code = CodeOf([&] {
            entry.stuff->WriteToDisk(file);
            int64_t count = 0;
            Footer footer = {kMagic, entry.cost, 0, DSK_Checksum(file, &count)};
            footer.count = static_cast<uint64_t>(count);
            if (const RK_Long failed = DSK_Write(file, &footer, sizeof footer)) throw failed;
        });
        const RK_Long closed = DSK_Close(file, code == 0);
        if (code == 0) code = closed;
    }
    if (code == 0) {
        STASH_Access::SetOnDisk(entry.stuff, true);
        ++g_use.disk_writes;
    } else {
        RefHost::Record(RefHost::ReportKind::Error, 0, 8, ("Cannot write cache file " + path).c_str());
    }
}

// True when the entry now has its contents. A file that is cut or damaged is reported and deleted.
bool ReadEntry(const std::string& path, STASH_Stuff* stuff, uint32_t* cost) {
    DSK_File* file = nullptr;
    if (path.empty() || DSK_OpenToRead(path.c_str(), &file) != 0) return false;
    const RK_Long code = CodeOf([&] {
        stuff->ReadFromDisk(file);
        int64_t count = 0;
        const uint64_t checksum = DSK_Checksum(file, &count);
        Footer footer{};
        if (const RK_Long failed = DSK_Read(file, &footer, sizeof footer)) throw failed;
        if (footer.magic != kMagic || footer.count != static_cast<uint64_t>(count) || footer.checksum != checksum ||
            DSK_BytesLeft(file) != 0)
            throw RK_Long{3};
        *cost = footer.cost;
    });
    DSK_Close(file, false);
    if (code == 0) {
        STASH_Access::SetOnDisk(stuff, true);
        ++g_use.disk_reads;
        return true;
    }
    stuff->Purge();
    if (code == 4) return false;
    ++g_use.damaged;
    DSK_Delete(path.c_str());
    stuff->DeletedDiskFile();
    RefHost::Record(RefHost::ReportKind::Error, 0, 8, ("Damaged cache file " + path).c_str());
    return false;
}

std::vector<Entry>::iterator PlaceOf(STASH_SortDir& dir, const STASH_Stuff& key) {
    return std::lower_bound(dir.entries.begin(), dir.entries.end(), key,
                            [](const Entry& e, const STASH_Stuff& k) { return e.stuff->IsLess(k); });
}
bool IsAt(const STASH_SortDir& dir, std::vector<Entry>::iterator place, const STASH_Stuff& key) {
    return place != dir.entries.end() && !key.IsLess(*place->stuff);
}

int64_t LoadedBytes() {
    int64_t bytes = 0;
    for (const STASH_SortDir* dir : g_dirs)
        for (const Entry& e : dir->entries)
            if (e.stuff->IsLoaded()) bytes += e.stuff->SizeInBytes();
    return bytes;
}

// Whether a should go before b: less cost for its size, or older.
bool GoesFirst(const Entry& a, const Entry& b) {
    const double worth_a = (1.0 + a.cost) / (1.0 + a.stuff->SizeInBytes());
    const double worth_b = (1.0 + b.cost) / (1.0 + b.stuff->SizeInBytes());
    return worth_a != worth_b ? worth_a < worth_b : a.last_use < b.last_use;
}

void PurgeEntry(const Entry& entry) {
    if (entry.checkouts == 0 && entry.stuff->Purge()) ++g_use.evicted;
}

void KeepToLimit() {
    while (LoadedBytes() > g_limit) {
        Entry* first = nullptr;
        for (STASH_SortDir* dir : g_dirs)
            for (Entry& e : dir->entries)
                if (e.checkouts == 0 && e.stuff->IsLoaded() && (!first || GoesFirst(e, *first))) first = &e;
        if (!first) return;
        PurgeEntry(*first);
    }
}

}  // namespace

// ---- Entries --------------------------------------------------------------------------------------------

STASH_Stuff::~STASH_Stuff() = default;
bool STASH_Stuff::IsOnDisk() const { return on_disk_; }
void STASH_Stuff::DeletedDiskFile() { on_disk_ = false; }

RK_Long STASH_Stuff::AddToBagAndSortDir(STASH_Bag*, uint32_t cost, STASH_SortDir* dir) {
    Hold hold(g_lock);
    Entry entry = {this, cost, ++g_clock, 0};
    const RK_Long code = CodeOf([&] {
        if (!dir) throw RK_Long{3};
        const auto place = PlaceOf(*dir, *this);
        if (IsAt(*dir, place, *this) && place->checkouts == 0) {
            delete place->stuff;
            *place = entry;
        } else {
            dir->entries.insert(place, entry);
        }
    });
    if (code != 0) {
        delete this;
        return code;
    }
    // The entry is in; what fails from here on leaves it in memory only.
    CodeOf([&] { WriteEntry(*dir, entry); });
    CodeOf([] { KeepToLimit(); });
    return 0;
}

STASH_ScCheckout::~STASH_ScCheckout() {
    if (!stuff_) return;
    Hold hold(g_lock);
    for (STASH_SortDir* dir : g_dirs)
        for (Entry& e : dir->entries)
            if (e.stuff == stuff_) --e.checkouts;
    KeepToLimit();
}

void STASH_ScCheckout::FindAndCheckout(STASH_SortDir* dir, const STASH_Stuff& key, int32_t, int32_t) {
    if (!dir || stuff_) return;
    Hold hold(g_lock);
    auto place = PlaceOf(*dir, key);
    bool found = IsAt(*dir, place, key);
    if (found && !place->stuff->IsLoaded()) {
        uint32_t cost = 0;
        found = ReadEntry(PathOf(*dir, *place->stuff), place->stuff, &cost);
        if (!found) {
            delete place->stuff;
            dir->entries.erase(place);
        }
    } else if (!found) {
        // Perhaps an earlier run left it.
        uint32_t cost = 0;
        const std::string path = PathOf(*dir, key);
        STASH_Stuff* stuff = path.empty() || !std::filesystem::exists(path) ? nullptr : key.NewLike();
        found = stuff && ReadEntry(path, stuff, &cost);
        if (found)
            place = dir->entries.insert(place, {stuff, cost, 0, 0});
        else
            delete stuff;
    }
    ++(found ? g_use.hits : g_use.misses);
    if (!found) return;
    ++place->checkouts;
    place->last_use = ++g_clock;
    stuff_ = place->stuff;
}

// ---- Directories ----------------------------------------------------------------------------------------

STASH_Bag* STASH_GlobalBag() { return &g_bag; }

STASH_SortDir* STASH_NewSortDir(const char* name) {
    Hold hold(g_lock);
    STASH_SortDir* dir = new (std::nothrow) STASH_SortDir;
    if (!dir) return nullptr;
    const RK_Long code = CodeOf([&] {
        dir->name = name ? name : "";
        g_dirs.push_back(dir);
    });
    if (code == 0) return dir;
    delete dir;
    return nullptr;
}

void STASH_DisposeSortDir(STASH_SortDir* dir) {
    if (!dir) return;
    Hold hold(g_lock);
    g_dirs.erase(std::remove(g_dirs.begin(), g_dirs.end(), dir), g_dirs.end());
    for (Entry& e : dir->entries) delete e.stuff;
    delete dir;
}

namespace RefHost {

StashUse Stash() {
    Hold hold(g_lock);
    StashUse use = g_use;
    use.entries = 0;
    use.bytes = LoadedBytes();
    for (const STASH_SortDir* dir : g_dirs)
        for (const Entry& e : dir->entries) use.entries += e.stuff->IsLoaded();
    return use;
}

void SetStashLimit(int64_t bytes) {
    Hold hold(g_lock);
    g_limit = bytes;
    KeepToLimit();
}

void SetStashFolder(const std::string& folder) {
    Hold hold(g_lock);
    g_folder = folder;
}

void PurgeStash() {
    Hold hold(g_lock);
    for (STASH_SortDir* dir : g_dirs)
        for (Entry& e : dir->entries) PurgeEntry(e);
}

}  // namespace RefHost
