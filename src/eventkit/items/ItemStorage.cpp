#include "eventkit/items/ItemStorage.h"

#include <QUuid>

namespace kestrant::items {

QByteArray newUid() {
    return QUuid::createUuid().toByteArray(QUuid::WithoutBraces).toUpper();
}

std::vector<tl::expected<std::optional<StoredText>, EKError>>
ItemStorage::readAll(const std::vector<FileLocation>& locations) {
    std::vector<tl::expected<std::optional<StoredText>, EKError>> results;
    results.reserve(locations.size());
    for (const FileLocation& location : locations)
        results.push_back(read(location));
    return results;
}

std::vector<tl::expected<StoredText, WriteError>>
ItemStorage::replaceAll(const std::vector<Replacement>& replacements) {
    std::vector<tl::expected<StoredText, WriteError>> results;
    results.reserve(replacements.size());
    for (const Replacement& wanted : replacements)
        results.push_back(replace(wanted.location, wanted.before, wanted.after, wanted.expected));
    return results;
}

}  // namespace kestrant::items
