#pragma once

#include "eventkit/items/StorageContents.h"

#include <QByteArray>

#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace kestrant::vdir {

/// Tells when something in a folder and its collections changes, by inotify.
/// Says what may have changed, not what did. Hidden and temporary files are
/// passed over.
class FolderWatcher {
  public:
    enum class Coverage {
        complete,
        /// Some folder is gone or may not be read.
        partial,
        /// The system has no more watches to give.
        limited,
    };

    /// `observer` is called on the watcher's own thread, at most until the
    /// watcher is destroyed.
    FolderWatcher(QByteArray root, std::function<void(const items::Changes&)> observer);
    FolderWatcher(const FolderWatcher&) = delete;
    FolderWatcher& operator=(const FolderWatcher&) = delete;
    ~FolderWatcher();

    /// Watches the root (or the nearest folder above it that exists) and these
    /// collections in it, and nothing else. Unless it is all watched, only a
    /// comparison finds out about changes. What changes from the moment of this
    /// call on is told. Thread: any.
    [[nodiscard]] Coverage watch(const std::vector<QByteArray>& collections);

  private:
    enum class Kind { collection, root, above };
    struct Watched {
        Kind kind;
        QByteArray collection;
    };

    void loop();
    [[nodiscard]] items::Changes readEvents();
    static void add(items::Changes& changes, const Watched& watched, const QByteArray& name);
    [[nodiscard]] Coverage add(const QByteArray& path, Watched watched,
                               std::map<int, Watched>& watches) const;

    QByteArray root_;
    std::function<void(const items::Changes&)> observer_;
    int inotify_;
    int stop_;
    std::mutex mutex_;
    std::map<int, Watched> watches_;
    std::thread thread_;
};

}  // namespace kestrant::vdir
