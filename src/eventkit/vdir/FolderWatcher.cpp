#include "eventkit/vdir/FolderWatcher.h"

#include "eventkit/items/Journal.h"
#include "eventkit/vdir/VdirFiles.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace kestrant::vdir {
namespace {

constexpr std::uint32_t folderEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_ATTRIB |
                                       IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;
constexpr std::uint32_t collectionEvents = folderEvents | IN_CLOSE_WRITE;
constexpr std::uint32_t aboveEvents = IN_CREATE | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

QByteArray nearestExistingFolder(QByteArray path) {
    struct stat status {};
    while (::stat(path.constData(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        const qsizetype slash = path.lastIndexOf('/');
        if (slash <= 0)
            return slash == 0 ? "/" : ".";
        path.truncate(slash);
    }
    return path;
}

}  // namespace

FolderWatcher::FolderWatcher(QByteArray root, std::function<void(const items::Changes&)> observer)
    : root_(std::move(root))
    , observer_(std::move(observer))
    , inotify_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    , stop_(inotify_ < 0 ? -1 : ::eventfd(0, EFD_CLOEXEC)) {
    // Without an end there can be no beginning.
    if (stop_ >= 0)
        thread_ = std::thread([this] { loop(); });
}

FolderWatcher::~FolderWatcher() {
    if (stop_ >= 0) {
        const std::uint64_t one = 1;
        (void)!::write(stop_, &one, sizeof one);
        thread_.join();
        ::close(stop_);
    }
    if (inotify_ >= 0)
        ::close(inotify_);
}

FolderWatcher::Coverage FolderWatcher::add(const QByteArray& path, Watched watched,
                                           std::map<int, Watched>& watches) const {
    const std::uint32_t events = watched.kind == Kind::collection ? collectionEvents
                                 : watched.kind == Kind::root     ? folderEvents
                                                                  : aboveEvents;
    const int descriptor = ::inotify_add_watch(inotify_, path.constData(), events);
    if (descriptor < 0)
        return errno == ENOSPC || errno == ENOMEM ? Coverage::limited : Coverage::partial;
    watches.insert_or_assign(descriptor, std::move(watched));
    return Coverage::complete;
}

FolderWatcher::Coverage FolderWatcher::watch(const std::vector<QByteArray>& collections) {
    const std::lock_guard lock(mutex_);
    if (stop_ < 0)
        return Coverage::limited;
    std::map<int, Watched> watches;
    const QByteArray nearest = nearestExistingFolder(root_);
    Coverage result = add(nearest, {nearest == root_ ? Kind::root : Kind::above, {}}, watches);
    for (const QByteArray& name : collections)
        result = std::max(result, add(root_ + '/' + name, {Kind::collection, name}, watches));
    for (const auto& [descriptor, watched] : watches_) {
        if (!watches.contains(descriptor))
            ::inotify_rm_watch(inotify_, descriptor);
    }
    watches_ = std::move(watches);
    return result;
}

void FolderWatcher::loop() {
    while (true) {
        std::array<pollfd, 2> sources{{{stop_, POLLIN, 0}, {inotify_, POLLIN, 0}}};
        if (::poll(sources.data(), sources.size(), -1) < 0)
            continue;
        if (sources[0].revents != 0)
            return;
        const items::Changes changes = readEvents();
        if (changes.everything || changes.collections || !changes.files.empty())
            observer_(changes);
    }
}

void FolderWatcher::add(items::Changes& changes, const Watched& watched, const QByteArray& name) {
    if (watched.kind == Kind::collection) {
        // Without a name it is about the folder itself.
        if (name.isEmpty() || isItemName(name) || isMetadataName(name))
            changes.files[watched.collection].insert(name);
        changes.collections = changes.collections || name.isEmpty();
    } else if (watched.kind == Kind::above || name.isEmpty()) {
        changes.everything = true;
    } else if (!name.startsWith('.')) {
        changes.files[name].insert(QByteArray());
        changes.collections = true;
    } else if (items::isJournalName(name)) {
        changes.collections = true;
    }
}

items::Changes FolderWatcher::readEvents() {
    items::Changes changes;
    alignas(inotify_event) std::array<char, 16 * 1024> buffer{};
    ssize_t size = 0;
    while ((size = ::read(inotify_, buffer.data(), buffer.size())) > 0) {
        const std::lock_guard lock(mutex_);
        ssize_t position = 0;
        while (position < size) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + position, sizeof event);
            const QByteArray name =
                event.len > 0 ? QByteArray(buffer.data() + position + sizeof event) : QByteArray();
            position += static_cast<ssize_t>(sizeof event + event.len);
            const auto watched = watches_.find(event.wd);
            if ((event.mask & IN_Q_OVERFLOW) != 0)
                changes.everything = true;
            if (watched == watches_.end() || (event.mask & IN_IGNORED) != 0)
                continue;
            add(changes, watched->second, name);
        }
    }
    return changes;
}

}  // namespace kestrant::vdir
