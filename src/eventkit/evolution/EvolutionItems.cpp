#include "eventkit/evolution/EvolutionStorage.h"
#include "eventkit/evolution/ServiceText.h"
#include "eventkit/evolution/TwoSteps.h"
#include "eventkit/icalendar/ItemReading.h"
#include "eventkit/model/EKErrors.h"

#include <algorithm>
#include <chrono>
#include <utility>

// Reading and writing items one by one and many at once.

namespace kestrant::evolution {

using icalendar::Document;
using items::FileLocation;
using items::StoredText;
using items::WriteError;

namespace {

using namespace std::chrono_literals;

StoredText stored(QByteArray text) {
    const items::Version version = versionOf(text);
    return {version, std::move(text)};
}

/// The title of an item, for a sentence about it.
QString titleIn(const Document& document, QByteArrayView name) {
    const auto components = document.components(name);
    return components.empty() ? QString()
                              : icalendar::readText(components.front(), "SUMMARY").value_or(QString());
}

/// The error where nobody knows whether something was written.
const EKError* whereUnknown(const WriteError& error) {
    const auto* const known = std::get_if<EKError>(&error);
    return known && known->code == EKError::Code::outcomeUnknown ? known : nullptr;
}

constexpr std::chrono::milliseconds firstPause = 50ms;
constexpr std::chrono::milliseconds longestPause = 60s;
/// The service needs about that long to see what is on a server.
constexpr std::chrono::milliseconds lastLook = 2s;

EKError serverFailed(const QString& list) {
    const TextPair pair = text("The server of “%1” had an error. Nothing was written.",
                               "Le serveur de « %1 » a eu une erreur. Rien n’a été enregistré.");
    return {EKError::Code::storage, {pair.english.arg(list), pair.french.arg(list)}};
}

}  // namespace

tl::expected<std::optional<StoredText>, EKError> EvolutionStorage::read(const FileLocation& location) {
    const auto client = openClient(location.collection);
    if (!client)
        return tl::unexpected(client.error());
    auto text = (*client)->read(location.file);
    if (!text) {
        const auto* const error = std::get_if<EKError>(&text.error());
        return tl::unexpected(error ? *error : itemNotFoundError());
    }
    return *text ? std::optional(stored(std::move(**text))) : std::nullopt;
}

std::optional<EKError> EvolutionStorage::writeRefusal(const FileLocation&) {
    return std::nullopt;
}

tl::expected<StoredText, WriteError> EvolutionStorage::readToChange(const FileLocation& location,
                                                                    const items::Version& expected) {
    auto present = read(location);
    if (!present)
        return tl::unexpected(WriteError(std::move(present.error())));
    if (!*present || (*present)->version != expected)
        return tl::unexpected(WriteError(items::ChangedMeanwhile{}));
    return std::move(**present);
}

tl::expected<StoredText, WriteError> EvolutionStorage::readBack(const FileLocation& location) {
    auto text = read(location);
    if (!text && text.error().code == EKError::Code::storage)
        text = readOnceItAnswers(location, text.error());
    if (!text)
        return tl::unexpected(WriteError(std::move(text.error())));
    if (!*text)
        return tl::unexpected(WriteError(itemNotFoundError()));
    return std::move(**text);
}

tl::expected<std::optional<StoredText>, EKError>
EvolutionStorage::readOnceItAnswers(const FileLocation& location, const EKError& unknown) {
    for (auto pause = firstPause; limit_.pause(pause); pause = std::min(2 * pause, longestPause)) {
        auto present = read(location);
        // Any other error than a silence is an answer.
        if (present || present.error().code != EKError::Code::storage)
            return present;
    }
    return tl::unexpected(unknown);
}

tl::expected<std::optional<StoredText>, EKError>
EvolutionStorage::readOutcome(EvolutionClient& client, const FileLocation& location,
                              const std::optional<items::Version>& before, const EKError& unknown) {
    if (client.isLost())
        return readOnceItAnswers(location, unknown);
    for (auto pause = firstPause; pause <= lastLook; pause *= 2) {
        client.refresh();
        if (!limit_.pause(pause))
            break;
        auto present = read(location);
        if (!present)
            return readOnceItAnswers(location, unknown);
        if ((*present ? std::optional((*present)->version) : std::nullopt) != before)
            return present;
    }
    return tl::unexpected(serverFailed(client.title()));
}

tl::expected<StoredText, WriteError> EvolutionStorage::replace(const FileLocation& location,
                                                               const Document& before, const Document& after,
                                                               const items::Version& expected) {
    if (const auto present = readToChange(location, expected); !present)
        return tl::unexpected(present.error());
    const auto client = openClient(location.collection);
    if (!client)
        return tl::unexpected(WriteError(client.error()));
    const QByteArrayView name = (*client)->componentName();
    auto error = (*client)->write(location.file, changeBetween(before, after, name), titleIn(before, name));
    const auto steps = TwoSteps::current();
    if (!error) {
        if (steps)
            steps->noteChanged(location);
        noteSending(location.collection, **client);
        return readBack(location);
    }
    const EKError* const unknown = whereUnknown(*error);
    if (!unknown)
        return tl::unexpected(std::move(*error));
    auto present = readOutcome(**client, location, expected, *unknown);
    if (!present)
        return tl::unexpected(WriteError(std::move(present.error())));
    // The item was as expected a moment before, so a different text now is the one that was written.
    if (!*present || (*present)->version == expected)
        return tl::unexpected(WriteError(items::ChangedMeanwhile{}));
    if (steps)
        steps->noteChanged(location);
    return std::move(**present);
}

std::vector<tl::expected<std::optional<StoredText>, EKError>>
EvolutionStorage::readAll(const std::vector<FileLocation>& locations) {
    std::map<QByteArray, std::size_t> counts;
    for (const FileLocation& location : locations)
        ++counts[location.collection];
    std::map<QByteArray, std::optional<std::map<QByteArray, QByteArray>>> whole;
    for (const auto& [collection, count] : counts) {
        if (count <= mostReadAlone)
            continue;
        if (const auto client = openClient(collection))
            whole[collection] = (*client)->readAll();
    }
    std::vector<tl::expected<std::optional<StoredText>, EKError>> results;
    results.reserve(locations.size());
    for (const FileLocation& location : locations) {
        const auto list = whole.find(location.collection);
        if (list == whole.end() || !list->second) {
            results.push_back(read(location));
            continue;
        }
        const auto text = list->second->find(location.file);
        results.push_back(text == list->second->end() ? std::nullopt : std::optional(stored(text->second)));
    }
    return results;
}

std::set<std::size_t> EvolutionStorage::writeTogether(const std::vector<Replacement>& replacements) {
    std::vector<FileLocation> locations;
    locations.reserve(replacements.size());
    for (const Replacement& wanted : replacements)
        locations.push_back(wanted.location);
    const auto present = readAll(locations);
    std::map<QByteArray, std::vector<std::size_t>> lists;
    for (std::size_t i = 0; i < replacements.size(); ++i) {
        if (present[i] && *present[i] && (*present[i])->version == replacements[i].expected)
            lists[replacements[i].location.collection].push_back(i);
    }
    std::set<std::size_t> result;
    for (const auto& [collection, indices] : lists) {
        const auto client = openClient(collection);
        if (!client)
            continue;
        std::vector<ServiceChange> changes;
        for (const std::size_t i : indices)
            changes.push_back(
                changeBetween(replacements[i].before, replacements[i].after, (*client)->componentName()));
        if ((*client)->writeAll(changes))
            result.insert(indices.begin(), indices.end());
        noteSending(collection, **client);
    }
    return result;
}

std::vector<tl::expected<StoredText, WriteError>>
EvolutionStorage::replaceAll(const std::vector<Replacement>& replacements) {
    const std::set<std::size_t> together =
        replacements.size() > 1 ? writeTogether(replacements) : std::set<std::size_t>();
    std::vector<FileLocation> locations;
    locations.reserve(together.size());
    for (const std::size_t i : together)
        locations.push_back(replacements[i].location);
    auto kept = readAll(locations);
    auto next = kept.begin();
    std::vector<tl::expected<StoredText, WriteError>> results;
    results.reserve(replacements.size());
    for (std::size_t i = 0; i < replacements.size(); ++i) {
        const Replacement& wanted = replacements[i];
        if (!together.contains(i)) {
            results.push_back(replace(wanted.location, wanted.before, wanted.after, wanted.expected));
            continue;
        }
        auto& text = *next++;
        if (text && *text)
            results.emplace_back(std::move(**text));
        else
            results.push_back(
                tl::unexpected(WriteError(text ? itemNotFoundError() : std::move(text.error()))));
    }
    return results;
}

std::optional<WriteError> EvolutionStorage::remove(const FileLocation& location,
                                                   const items::Version& expected) {
    const auto present = readToChange(location, expected);
    if (!present)
        return present.error();
    const auto client = openClient(location.collection);
    if (!client)
        return client.error();
    const auto document = Document::parse(present->text);
    auto error = (*client)->remove(location.file,
                                   document ? titleIn(*document, (*client)->componentName()) : QString());
    const auto steps = TwoSteps::current();
    if (!error) {
        if (steps)
            steps->noteRemoved(location);
        noteSending(location.collection, **client);
        return std::nullopt;
    }
    const EKError* const unknown = whereUnknown(*error);
    if (!unknown)
        return error;
    const auto left = readOutcome(**client, location, expected, *unknown);
    if (!left)
        return left.error();
    if (*left)
        return items::ChangedMeanwhile{};
    if (steps)
        steps->noteRemoved(location);
    return std::nullopt;
}

tl::expected<EvolutionStorage::Created, EKError> EvolutionStorage::create(const QByteArray& collection,
                                                                          const QByteArray& uid,
                                                                          const QByteArray& /*preferredName*/,
                                                                          const Document& document) {
    const auto failed = [&](WriteError error) {
        auto* const known = std::get_if<EKError>(&error);
        return tl::unexpected(known ? std::move(*known) : itemNotFoundError());
    };
    const auto client = openClient(collection);
    if (!client)
        return tl::unexpected(client.error());
    const QByteArrayView name = (*client)->componentName();
    const FileLocation wanted{collection, uid};
    const auto steps = TwoSteps::current();
    if (steps)
        steps->noteMade(wanted);
    auto created =
        (*client)->create(uid, changeBetween(Document::make(), document, name), titleIn(document, name));
    if (created) {
        const FileLocation location{collection, *created};
        auto text = readBack(location);
        if (!text)
            return failed(std::move(text.error()));
        if (steps) {
            if (location != wanted)
                steps->noteRemoved(wanted);
            steps->noteMade(location, text->text);
        }
        noteSending(collection, **client);
        return Created{location, *created, std::move(*text)};
    }
    const EKError* const unknown = whereUnknown(created.error());
    if (!unknown) {
        if (steps)
            steps->noteRemoved(wanted);
        return failed(std::move(created.error()));
    }
    auto present = readOutcome(**client, wanted, std::nullopt, *unknown);
    if (!present)
        return tl::unexpected(std::move(present.error()));
    if (!*present)
        return tl::unexpected(noAnswerError((*client)->title()));
    if (steps)
        steps->noteMade(wanted, (*present)->text);
    return Created{wanted, uid, std::move(**present)};
}

}  // namespace kestrant::evolution
