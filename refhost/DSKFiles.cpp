// Files that are read, and files that appear whole or not at all.
#include <cstdio>
#include <filesystem>
#include <new>
#include <string>

#include "RK/host/DSK.h"

struct DSK_File {
    std::FILE* stream = nullptr;
    bool writing = false;
    bool failed = false;
    std::string path, beside;  // beside: where a created file is written until it is whole
    int64_t size = 0, count = 0;
    uint64_t sum = 14695981039346656037u;

    // FNV-1a.
    void Add(const void* bytes, size_t n) {
        const unsigned char* p = static_cast<const unsigned char*>(bytes);
        for (size_t i = 0; i < n; ++i) sum = (sum ^ p[i]) * 1099511628211u;
        count += static_cast<int64_t>(n);
    }
};

namespace {

RK_Long Open(const char* path, bool writing, DSK_File** out) {
    *out = nullptr;
    if (!path || !*path) return 3;
    try {
        DSK_File* file = new DSK_File;
        file->writing = writing;
        std::error_code error;
        try {
            file->path = path;
            file->beside = file->path + ".part";
            if (!writing) file->size = static_cast<int64_t>(std::filesystem::file_size(file->path, error));
        } catch (...) {
            delete file;
            throw;
        }
        if (!error) file->stream = std::fopen((writing ? file->beside : file->path).c_str(), writing ? "wb" : "rb");
        if (!file->stream) {
            delete file;
            return 3;
        }
        *out = file;
        return 0;
    } catch (const std::bad_alloc&) {
        return 4;
    } catch (const std::exception&) {
        return 3;
    }
}

}  // namespace

RK_Long DSK_OpenToRead(const char* path, DSK_File** file) { return Open(path, false, file); }
RK_Long DSK_CreateWhole(const char* path, DSK_File** file) { return Open(path, true, file); }

RK_Long DSK_Read(DSK_File* file, void* bytes, size_t count) {
    if (file->writing || std::fread(bytes, 1, count, file->stream) != count) return 3;
    file->Add(bytes, count);
    return 0;
}

RK_Long DSK_Write(DSK_File* file, const void* bytes, size_t count) {
    if (!file->writing || std::fwrite(bytes, 1, count, file->stream) != count) {
        file->failed = true;
        return 3;
    }
    file->Add(bytes, count);
    return 0;
}

int64_t DSK_BytesLeft(DSK_File* file) { return file->writing ? 0 : file->size - file->count; }

uint64_t DSK_Checksum(DSK_File* file, int64_t* count) {
    *count = file->count;
    return file->sum;
}

RK_Long DSK_Close(DSK_File* file, bool keep) {
    bool good = std::fclose(file->stream) == 0 && !file->failed;
    if (file->writing) {
        if (good && keep) good = std::rename(file->beside.c_str(), file->path.c_str()) == 0;
        if (!good || !keep) std::remove(file->beside.c_str());
    }
    delete file;
    return good ? 0 : 3;
}

RK_Long DSK_Delete(const char* path) { return std::remove(path) == 0 ? 0 : 3; }
