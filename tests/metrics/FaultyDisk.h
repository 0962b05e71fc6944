#pragma once

#include <functional>
#include <memory>

namespace kestrant {

/// While it lives, SQLite's default access to files asks it before every change to the disk (a write, a
/// truncation, a sync, a deletion), and reports its answer as the outcome when that is an error; everything
/// else is real. One at a time. The hook is called on the thread that uses the database.
class FaultyDisk {
  public:
    /// Returns an SQLite result code; SQLITE_OK lets the change happen.
    using Hook = std::function<int()>;

    explicit FaultyDisk(Hook hook);
    ~FaultyDisk();
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

  private:
    struct Layer;
    std::unique_ptr<Layer> layer_;
};

}  // namespace kestrant
