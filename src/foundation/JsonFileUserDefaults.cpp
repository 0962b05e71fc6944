#include "foundation/JsonFileUserDefaults.h"

#include "foundation/AtomicFile.h"
#include "foundation/FileLock.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace kestrant {

namespace {

/// How long changes are gathered before they are written together.
constexpr int gatheringMilliseconds = 100;
/// A file that holds no JSON object is read again so often before it counts as damaged.
constexpr int mostTries = 20;
constexpr int retryMilliseconds = 25;

std::optional<QJsonObject> parse(const QByteArray& document) {
    const QJsonDocument json = QJsonDocument::fromJson(document);
    if (!json.isObject())
        return std::nullopt;
    return json.object();
}

TextPair unreadable(const FileError& error) {
    return {
        QStringLiteral("The settings cannot be read: %1: %2").arg(error.path, error.description),
        QStringLiteral("Les réglages ne peuvent pas être lus : %1 : %2").arg(error.path, error.description)};
}

TextPair unwritable(const FileError& error) {
    return {QStringLiteral("The settings cannot be saved: %1: %2").arg(error.path, error.description),
            QStringLiteral("Les réglages ne peuvent pas être enregistrés : %1 : %2")
                .arg(error.path, error.description)};
}

TextPair inUse(const QString& path) {
    return {QStringLiteral("The settings cannot be saved: another Kestrant process holds %1.").arg(path),
            QStringLiteral("Les réglages ne peuvent pas être enregistrés : un autre processus de Kestrant "
                           "retient %1.")
                .arg(path)};
}

TextPair setAsideAs(const QString& path) {
    return {QStringLiteral("The settings were damaged. They were kept as %1, and new ones begun.").arg(path),
            QStringLiteral(
                "Les réglages étaient endommagés. Ils ont été gardés sous %1, et de nouveaux commencés.")
                .arg(path)};
}

/// `theirs` with what leads from `before` to `ours`. Of objects that is done member by member, so that two
/// processes may add to one at a time.
QJsonValue merged(const QJsonValue& before, const QJsonValue& ours, const QJsonValue& theirs) {
    if (!ours.isObject() || !theirs.isObject())
        return ours;
    const QJsonObject from = before.toObject();
    const QJsonObject to = ours.toObject();
    QJsonObject result = theirs.toObject();
    for (auto member = from.constBegin(); member != from.constEnd(); ++member) {
        if (!to.contains(member.key()))
            result.remove(member.key());
    }
    for (auto member = to.constBegin(); member != to.constEnd(); ++member) {
        if (from.value(member.key()) != member.value())
            result.insert(member.key(), member.value());
    }
    return result;
}

/// Puts a value in, or takes the key out where it is undefined.
void put(QJsonObject& values, const QString& key, const QJsonValue& value) {
    if (value.isUndefined())
        values.remove(key);
    else
        values.insert(key, value);
}

/// Notices when a file in a folder is written, replaced or removed.
class FileWatch {
  public:
    explicit FileWatch(const QString& path)
        : name_(QFile::encodeName(QFileInfo(path).fileName()))
        , descriptor_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
        if (descriptor_ >= 0)
            (void)::inotify_add_watch(descriptor_, QFile::encodeName(QFileInfo(path).path()).constData(),
                                      IN_CLOSE_WRITE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE);
    }
    FileWatch(const FileWatch&) = delete;
    FileWatch& operator=(const FileWatch&) = delete;
    ~FileWatch() {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }

    /// Becomes readable when something in the folder has happened; -1 where watching is impossible.
    [[nodiscard]] int descriptor() const { return descriptor_; }

    /// Whether any of what has happened concerns the file.
    bool takeChanges() {
        bool concernsFile = false;
        alignas(inotify_event) std::array<char, 16 * (sizeof(inotify_event) + NAME_MAX + 1)> buffer;
        ssize_t length = 0;
        while ((length = ::read(descriptor_, buffer.data(), buffer.size())) > 0) {
            for (ssize_t at = 0; at < length;) {
                inotify_event event;
                std::memcpy(&event, buffer.data() + at, sizeof event);
                const char* name = buffer.data() + at + sizeof event;
                concernsFile |= (event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && name_ == name);
                at += static_cast<ssize_t>(sizeof event + event.len);
            }
        }
        return concernsFile;
    }

  private:
    QByteArray name_;
    int descriptor_;
};

}  // namespace

/// A flag one thread raises and another waits for.
class JsonFileUserDefaults::Event {
  public:
    Event() : descriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;
    ~Event() { ::close(descriptor_); }

    [[nodiscard]] int descriptor() const { return descriptor_; }
    void raise() { (void)::eventfd_write(descriptor_, 1); }
    void lower() {
        eventfd_t value = 0;
        (void)::eventfd_read(descriptor_, &value);
    }

  private:
    int descriptor_;
};

JsonFileUserDefaults::JsonFileUserDefaults(QString path, Scheduler& scheduler)
    : path_(std::move(path))
    , scheduler_(scheduler)
    , ownThread_(std::this_thread::get_id())
    , changed_(std::make_unique<Event>())
    , stopped_(std::make_unique<Event>()) {
    if (const auto document = readFile(path_)) {
        if (const auto values = parse(*document))
            values_ = *values;
        else
            setProblem(TextPair{QStringLiteral("The settings are damaged: %1").arg(path_),
                                QStringLiteral("Les réglages sont endommagés : %1").arg(path_)});
    } else if (document.error().errorNumber != ENOENT) {
        setProblem(unreadable(document.error()));
    }
    thread_ = std::thread([this] { run(); });
}

JsonFileUserDefaults::~JsonFileUserDefaults() {
    stopped_->raise();
    thread_.join();
    flush();
}

QJsonValue JsonFileUserDefaults::object(const QString& key) const {
    const std::lock_guard lock(mutex_);
    return values_.value(key);
}

void JsonFileUserDefaults::set(const QString& key, const QJsonValue& value) {
    {
        const std::lock_guard lock(mutex_);
        const QJsonValue before = values_.value(key);
        if (before == value)
            return;
        put(values_, key, value);
        if (!unwritten_.contains(key))
            unwritten_.insert(key, before);
    }
    changed_->raise();
    if (std::this_thread::get_id() == ownThread_)
        observers_.notify(key);
    else
        tell({key});
}

Subscription JsonFileUserDefaults::observe(std::function<void(const QString&)> observer) {
    return observers_.add(std::move(observer));
}

void JsonFileUserDefaults::tell(const QStringList& keys) {
    if (keys.isEmpty())
        return;
    scheduler_.post([this, keys, alive = std::weak_ptr<bool>(isAlive_)] {
        for (const QString& key : keys) {
            if (!alive.expired())
                observers_.notify(key);
        }
    });
}

std::optional<TextPair> JsonFileUserDefaults::problem() const {
    const std::lock_guard lock(mutex_);
    return problem_;
}

Subscription JsonFileUserDefaults::observeProblem(std::function<void()> observer) {
    return problemObservers_.add(std::move(observer));
}

void JsonFileUserDefaults::setProblem(std::optional<TextPair> problem) {
    {
        const std::lock_guard lock(mutex_);
        if (problem_ == problem)
            return;
        problem_ = std::move(problem);
        if (problem_)
            qWarning("%s", qUtf8Printable(problem_->english));
    }
    scheduler_.post([this, alive = std::weak_ptr<bool>(isAlive_)] {
        if (!alive.expired())
            problemObservers_.notify();
    });
}

void JsonFileUserDefaults::run() {
    // The folder has to be there to be watched.
    if (const auto folder = createFolder(QFileInfo(path_).path()); !folder)
        setProblem(unwritable(folder.error()));
    removeAbandonedFiles(QFileInfo(path_).path());
    FileWatch watch(path_);
    // Takes in changes made between the first reading and the watch.
    takeOverFile();
    while (true) {
        std::array<pollfd, 3> waitedFor{{{stopped_->descriptor(), POLLIN, 0},
                                         {changed_->descriptor(), POLLIN, 0},
                                         {watch.descriptor(), POLLIN, 0}}};
        (void)::poll(waitedFor.data(), waitedFor.size(), -1);
        if (waitedFor[0].revents != 0)
            return;
        if (waitedFor[2].revents != 0 && watch.takeChanges())
            takeOverFile();
        if (waitedFor[1].revents != 0) {
            (void)::poll(waitedFor.data(), 1, gatheringMilliseconds);
            if (waitedFor[0].revents != 0)
                return;
            changed_->lower();
            flush();
        }
    }
}

void JsonFileUserDefaults::takeOverFile() {
    const std::lock_guard fileLock(fileMutex_);
    const auto document = readFile(path_);
    if (document) {
        // The file may be in the middle of being written: keep the known values.
        if (const auto values = parse(*document))
            adopt(*values);
    } else if (document.error().errorNumber == ENOENT) {
        adopt({});
    }
}

bool JsonFileUserDefaults::flush() {
    const std::lock_guard fileLock(fileMutex_);
    QJsonObject known;
    QHash<QString, QJsonValue> changed;
    {
        const std::lock_guard lock(mutex_);
        known = values_;
        changed = unwritten_;
    }
    if (changed.isEmpty())
        return true;

    const QFileInfo file(path_);
    if (const auto folder = createFolder(file.path()); !folder) {
        setProblem(unwritable(folder.error()));
        return false;
    }
    const auto lock = FileLock::besideFile(path_);
    if (!lock) {
        setProblem(lock.error().errorNumber == EWOULDBLOCK ? inUse(path_) : unwritable(lock.error()));
        return false;
    }
    QJsonObject values;
    std::optional<TextPair> problem;
    bool isWritten = false;
    for (int tries = 1; !isWritten; ++tries) {
        auto document = readFile(path_);
        if (!document && document.error().errorNumber != ENOENT) {
            setProblem(unreadable(document.error()));
            return false;
        }
        const auto present = document ? parse(*document) : QJsonObject();
        if (!present && tries < mostTries) {
            // It may be in the middle of being written.
            (void)::poll(nullptr, 0, retryMilliseconds);
            continue;
        }
        std::optional<QByteArray> replaced;
        if (present) {
            values = *present;
            if (document)
                replaced = std::move(*document);
        } else {
            const auto aside = setFileAside(path_);
            if (!aside) {
                setProblem(unwritable(aside.error()));
                return false;
            }
            values = known;
            problem = setAsideAs(*aside);
        }
        for (auto change = changed.cbegin(); change != changed.cend(); ++change) {
            const QString& key = change.key();
            put(values, key, merged(change.value(), known.value(key), values.value(key)));
        }
        const auto written = replaceContent(path_, replaced, QJsonDocument(values).toJson());
        isWritten = written.has_value();
        // Another program that does not lock the file has changed it.
        if (!isWritten && (written.error().errorNumber != ESTALE || tries >= 2 * mostTries)) {
            setProblem(unwritable(written.error()));
            return false;
        }
    }
    {
        const std::lock_guard valuesLock(mutex_);
        for (auto change = changed.cbegin(); change != changed.cend(); ++change) {
            if (values_.value(change.key()) == known.value(change.key()))
                unwritten_.remove(change.key());
            else
                unwritten_.insert(change.key(), known.value(change.key()));
        }
    }
    adopt(values);
    setProblem(std::move(problem));
    return true;
}

void JsonFileUserDefaults::adopt(const QJsonObject& values) {
    QStringList differing;
    {
        const std::lock_guard lock(mutex_);
        QJsonObject next = values;
        for (auto change = unwritten_.begin(); change != unwritten_.end(); ++change) {
            const QJsonValue theirs = values.value(change.key());
            put(next, change.key(), merged(change.value(), values_.value(change.key()), theirs));
            change.value() = theirs;
        }
        for (auto entry = next.constBegin(); entry != next.constEnd(); ++entry) {
            if (values_.value(entry.key()) != entry.value())
                differing.append(entry.key());
        }
        for (auto entry = values_.constBegin(); entry != values_.constEnd(); ++entry) {
            if (!next.contains(entry.key()))
                differing.append(entry.key());
        }
        values_ = next;
    }
    tell(differing);
}

}  // namespace kestrant
