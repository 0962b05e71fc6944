#include "eventkit/items/Journal.h"

#include "foundation/AtomicFile.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <unistd.h>

#include <atomic>

namespace kestrant::items {

namespace {

constexpr auto prefix = ".kestrant-";
constexpr auto suffix = ".journal";

const auto changedKey = QStringLiteral("changed");
const auto beforeKey = QStringLiteral("before");
const auto isRemovedKey = QStringLiteral("removed");
const auto madeKey = QStringLiteral("made");
const auto listKey = QStringLiteral("list");
const auto fileKey = QStringLiteral("file");
const auto digestKey = QStringLiteral("text");

// Names are bytes, which JSON cannot hold.
QString encoded(const QByteArray& name) {
    return QString::fromLatin1(name.toPercentEncoding());
}

QByteArray decoded(const QJsonValue& name) {
    return QByteArray::fromPercentEncoding(name.toString().toLatin1());
}

QJsonObject toJson(const FileLocation& location) {
    return {{listKey, encoded(location.collection)}, {fileKey, encoded(location.file)}};
}

std::optional<FileLocation> locationFrom(const QJsonObject& json) {
    FileLocation location{decoded(json.value(listKey)), decoded(json.value(fileKey))};
    if (location.collection.isEmpty() || location.file.isEmpty())
        return std::nullopt;
    return location;
}

}  // namespace

QByteArray Journal::text() const {
    QJsonArray files;
    for (const Made& file : made) {
        QJsonObject json = toJson(file.location);
        json.insert(digestKey, QString::fromLatin1(file.digest));
        files.append(json);
    }
    const QJsonObject json{{changedKey, toJson(changed)},
                           {beforeKey, QString::fromLatin1(before)},
                           {isRemovedKey, isRemoved},
                           {madeKey, files}};
    return QJsonDocument(json).toJson(QJsonDocument::Compact) + '\n';
}

std::optional<Journal> Journal::parse(QByteArrayView text) {
    const QJsonObject json = QJsonDocument::fromJson(text.toByteArray()).object();
    const auto changed = locationFrom(json.value(changedKey).toObject());
    if (!changed)
        return std::nullopt;
    Journal result{.made = {},
                   .changed = *changed,
                   .before = json.value(beforeKey).toString().toLatin1(),
                   .isRemoved = json.value(isRemovedKey).toBool()};
    for (const QJsonValue file : json.value(madeKey).toArray()) {
        const auto location = locationFrom(file.toObject());
        if (!location)
            return std::nullopt;
        result.made.push_back({*location, file.toObject().value(digestKey).toString().toLatin1()});
    }
    return result;
}

std::vector<QByteArray> Journal::collections() const {
    std::vector<QByteArray> result{changed.collection};
    for (const Made& file : made)
        result.push_back(file.location.collection);
    return result;
}

bool Journal::isDone(const std::optional<QByteArray>& present) const {
    return !present || (digestOf(*present) != before && !isRemoved);
}

QByteArray digestOf(const QByteArray& text) {
    return QCryptographicHash::hash(text, QCryptographicHash::Sha256).toHex();
}

QByteArray newJournalName() {
    static std::atomic<unsigned> counter = 0;
    return prefix + QByteArray::number(::getpid()) + '-' + QByteArray::number(counter++) + suffix;
}

bool isJournalName(QByteArrayView name) {
    return processNamedIn(name, prefix, suffix).has_value();
}

bool isOfRunningProcess(QByteArrayView journalName) {
    const auto process = processNamedIn(journalName, prefix, suffix);
    return process && isRunning(*process);
}

}  // namespace kestrant::items
