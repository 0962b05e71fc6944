#pragma once

#include "eventkit/items/ItemDatabase.h"
#include "eventkit/vdir/VdirStorage.h"

#include <utility>

namespace kestrant::vdir {

/// Made before the database that uses it.
struct VdirStorageHolder {
    explicit VdirStorageHolder(QByteArray root) : storage(std::move(root)) {}
    VdirStorage storage;
};

/// A folder of iCalendar files as a database. It notices what others change when it is told to look.
class VdirDatabase : private VdirStorageHolder, public items::ItemDatabase {
  public:
    explicit VdirDatabase(QByteArray root) : VdirStorageHolder(std::move(root)), ItemDatabase(storage) {}
};

}  // namespace kestrant::vdir
