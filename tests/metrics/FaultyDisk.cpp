#include "metrics/FaultyDisk.h"

#include <sqlite3.h>

#include <new>
#include <utility>

namespace kestrant {

namespace {

FaultyDisk::Hook* activeHook = nullptr;

/// SQLite allocates szOsFile bytes: this, and right behind it the file of the layer below.
struct File {
    sqlite3_file base;
    sqlite3_file* below() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* below(sqlite3_file* file) {
    return reinterpret_cast<File*>(file)->below();
}

template <typename Change>
int unlessFailing(Change change) {
    const int result = activeHook != nullptr ? (*activeHook)() : SQLITE_OK;
    return result == SQLITE_OK ? change() : result;
}

const sqlite3_io_methods methods{
    .iVersion = 1,
    .xClose = [](sqlite3_file* f) { return below(f)->pMethods->xClose(below(f)); },
    .xRead = [](sqlite3_file* f, void* to, int n,
                sqlite3_int64 at) { return below(f)->pMethods->xRead(below(f), to, n, at); },
    .xWrite =
        [](sqlite3_file* f, const void* from, int n, sqlite3_int64 at) {
            return unlessFailing([&] { return below(f)->pMethods->xWrite(below(f), from, n, at); });
        },
    .xTruncate =
        [](sqlite3_file* f, sqlite3_int64 n) {
            return unlessFailing([&] { return below(f)->pMethods->xTruncate(below(f), n); });
        },
    .xSync =
        [](sqlite3_file* f, int flags) {
            return unlessFailing([&] { return below(f)->pMethods->xSync(below(f), flags); });
        },
    .xFileSize = [](sqlite3_file* f, sqlite3_int64* n) { return below(f)->pMethods->xFileSize(below(f), n); },
    .xLock = [](sqlite3_file* f, int level) { return below(f)->pMethods->xLock(below(f), level); },
    .xUnlock = [](sqlite3_file* f, int level) { return below(f)->pMethods->xUnlock(below(f), level); },
    .xCheckReservedLock = [](sqlite3_file* f,
                             int* r) { return below(f)->pMethods->xCheckReservedLock(below(f), r); },
    .xFileControl = [](sqlite3_file* f, int op,
                       void* a) { return below(f)->pMethods->xFileControl(below(f), op, a); },
    .xSectorSize = [](sqlite3_file* f) { return below(f)->pMethods->xSectorSize(below(f)); },
    .xDeviceCharacteristics =
        [](sqlite3_file* f) { return below(f)->pMethods->xDeviceCharacteristics(below(f)); },
};

}  // namespace

struct FaultyDisk::Layer {
    sqlite3_vfs vfs;
    sqlite3_vfs* real;
    Hook hook;
};

FaultyDisk::FaultyDisk(Hook hook) : layer_(std::make_unique<Layer>()) {
    sqlite3_vfs* real = sqlite3_vfs_find(nullptr);
    *layer_ = {*real, real, std::move(hook)};
    activeHook = &layer_->hook;
    sqlite3_vfs& vfs = layer_->vfs;
    vfs.zName = "faulty";
    vfs.szOsFile += static_cast<int>(sizeof(File));
    vfs.xOpen = [](sqlite3_vfs* self, const char* name, sqlite3_file* file, int flags, int* outFlags) {
        auto* ours = new (file) File{};
        sqlite3_vfs* under = reinterpret_cast<Layer*>(self)->real;
        const int result = under->xOpen(under, name, ours->below(), flags, outFlags);
        ours->base.pMethods = ours->below()->pMethods != nullptr ? &methods : nullptr;
        return result;
    };
    vfs.xDelete = [](sqlite3_vfs* self, const char* name, int syncFolder) {
        sqlite3_vfs* under = reinterpret_cast<Layer*>(self)->real;
        return unlessFailing([&] { return under->xDelete(under, name, syncFolder); });
    };
    sqlite3_vfs_register(&vfs, 1);
}

FaultyDisk::~FaultyDisk() {
    sqlite3_vfs_register(layer_->real, 1);
    sqlite3_vfs_unregister(&layer_->vfs);
    activeHook = nullptr;
}

}  // namespace kestrant
