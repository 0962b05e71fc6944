#include "eventkit/evolution/EvolutionStorage.h"

#include "eventkit/EKErrors.h"

#include <QCryptographicHash>

#include <algorithm>
#include <mutex>
#include <thread>
#include <tuple>
#include <utility>

namespace kestrant::evolution {

using icalendar::Document;
using items::Changes;
using items::Collection;
using items::ItemFile;
using items::Library;
using items::Place;
using items::StoredText;
using items::WriteError;

namespace {

using namespace std::chrono_literals;

/// How long each call may take when the program ends.
constexpr auto longestAtTheEnd = 1s;
/// More items than this that changed at once are read with all the others.
constexpr std::size_t mostReadAlone = 50;

items::Version versionOf(const QByteArray& text) {
    const QByteArray hash = QCryptographicHash::hash(text, QCryptographicHash::Md5);
    items::Version result{};
    std::copy(hash.begin(), hash.end(), reinterpret_cast<char*>(result.data()));
    return result;
}

StoredText stored(QByteArray text) {
    const items::Version version = versionOf(text);
    return {version, std::move(text)};
}

EKError noService(const QString& detail) {
    const TextPair pair = text("The desktop’s calendar service cannot be reached: %1",
                               "Le service d’agenda du bureau est injoignable : %1");
    return {EKError::Code::storage, {pair.english.arg(detail), pair.french.arg(detail)}};
}

TextPair slowService() {
    return text("The desktop’s calendar service takes long to answer. Changes wait until it does.",
                "Le service d’agenda du bureau tarde à répondre. Les changements attendent sa réponse.");
}

TextPair silentList(const QString& title, const QString& detail) {
    const TextPair pair = text("“%1” does not answer; it is shown as it was last seen.",
                               "« %1 » ne répond pas ; la liste est affichée telle qu’elle était.");
    const QString reason = detail.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(detail);
    return {pair.english.arg(title) + reason, pair.french.arg(title) + reason};
}

EKError listDoesNotAnswer(const QString& title) {
    const TextPair pair =
        text("“%1” does not answer. Nothing was written.", "« %1 » ne répond pas. Rien n’a été enregistré.");
    return {EKError::Code::storage, {pair.english.arg(title), pair.french.arg(title)}};
}

QString titleOf(ESource* source) {
    const Text name(e_source_dup_display_name(source));
    return QString::fromUtf8(name.get());
}

ESourceSelectable* selectableOf(ESource* source, EKEntityType type) {
    const char* const extension =
        type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR;
    return E_SOURCE_SELECTABLE(e_source_get_extension(source, extension));
}

/// The title of an item, for a sentence about it.
QString titleIn(const Document& document, QByteArrayView name) {
    const auto components = document.components(name);
    const auto title = components.empty() ? std::nullopt : components.front().property("SUMMARY");
    return title ? QString::fromUtf8(title->value) : QString();
}

}  // namespace

class EvolutionStorage::Listener {
  public:
    explicit Listener(items::StorageObserver observer) : observer_(std::move(observer)) {}

    void tell(const Changes& changes) {
        const std::lock_guard lock(mutex_);
        if (observer_.changed)
            observer_.changed(changes);
    }
    void tellOfWaiting(bool waits) {
        const std::lock_guard lock(mutex_);
        if (observer_.waits)
            observer_.waits(waits ? std::optional(slowService()) : std::nullopt);
    }
    void end() {
        const std::lock_guard lock(mutex_);
        observer_ = {};
    }

  private:
    std::mutex mutex_;
    items::StorageObserver observer_;
};

EvolutionStorage::EvolutionStorage(items::StorageObserver observer, std::chrono::milliseconds longestCall)
    : listener_(std::make_shared<Listener>(std::move(observer)))
    , limit_(longestCall, [listener = listener_](bool isSlow) { listener->tellOfWaiting(isSlow); }) {}

EvolutionStorage::~EvolutionStorage() {
    close();
}

std::optional<EKError> EvolutionStorage::open() {
    if (registry_)
        return std::nullopt;
    Error error;
    const auto call = limit_.call();
    registry_.reset(e_source_registry_new_sync(call.cancellable(), error.out()));
    if (!registry_)
        return noService(error.message());
    observeRegistry();
    return std::nullopt;
}

void EvolutionStorage::hurry() {
    limit_.setLongest(longestAtTheEnd);
}

void EvolutionStorage::close() {
    listener_->end();
    clients_.clear();
    for (const gulong handler : handlers_)
        g_signal_handler_disconnect(registry_.get(), handler);
    handlers_.clear();
    registry_.reset();
}

void EvolutionStorage::registryChanged(ESourceRegistry*, gpointer, gpointer listener) {
    (*static_cast<std::shared_ptr<Listener>*>(listener))->tell({.collections = true});
}

void EvolutionStorage::observeRegistry() {
    const auto forget =
        +[](gpointer listener, GClosure*) { delete static_cast<std::shared_ptr<Listener>*>(listener); };
    for (const char* signal : {"source-added", "source-removed", "source-changed", "source-enabled",
                               "source-disabled", "notify::default-task-list", "notify::default-calendar"})
        handlers_.push_back(g_signal_connect_data(registry_.get(), signal, G_CALLBACK(registryChanged),
                                                  new std::shared_ptr<Listener>(listener_), forget, {}));
}

std::map<QByteArray, EvolutionStorage::List> EvolutionStorage::enabledLists() {
    std::map<QByteArray, List> result;
    for (const EKEntityType type : {EKEntityType::reminder, EKEntityType::event}) {
        const ObjectList<GList> sources(e_source_registry_list_enabled(
            registry_.get(),
            type == EKEntityType::reminder ? E_SOURCE_EXTENSION_TASK_LIST : E_SOURCE_EXTENSION_CALENDAR));
        for (const GList* link = sources.first(); link; link = link->next) {
            auto* const source = E_SOURCE(link->data);
            // What the desktop's own calendar does not show is not wanted here either.
            if (e_source_selectable_get_selected(selectableOf(source, type)))
                result.try_emplace(e_source_get_uid(source),
                                   List{Ref<ESource>(E_SOURCE(g_object_ref(source))), type});
        }
    }
    return result;
}

EvolutionClient* EvolutionStorage::clientFor(const QByteArray& uid, const List& list, QString& error) {
    auto& client = clients_[uid];
    if (client && client->isLost())
        client.reset();
    if (!client) {
        client =
            EvolutionClient::connect(list.source.get(), list.type, limit_,
                                     {.itemsChanged =
                                          [this, uid](std::set<QByteArray> items) {
                                              listener_->tell({.files = {{uid, std::move(items)}}});
                                          },
                                      .propertiesChanged = [this] { listener_->tell({.collections = true}); },
                                      .lost =
                                          [this, uid] {
                                              listener_->tell({.files = {{uid, {}}}});
                                          }},
                                     error);
    }
    return client.get();
}

bool EvolutionStorage::update(Library& library, const Changes& changes, const ZoneCalendar& local) {
    if (!registry_)
        return false;
    const auto lists = enabledLists();
    bool changed = std::erase_if(library.collections, [&](const auto& collection) {
                       return !lists.contains(collection.first);
                   }) > 0;
    std::erase_if(clients_, [&](const auto& client) { return !lists.contains(client.first); });
    std::erase_if(silent_, [&](const auto& list) { return !lists.contains(list.first); });
    for (const auto& [uid, list] : lists) {
        const bool isNew = !library.collections.contains(uid);
        const auto named = changes.files.find(uid);
        const std::set<QByteArray> none;
        // Without names, everything in the list is compared.
        const bool isAll =
            isNew || changes.everything || !clients_.contains(uid) || silent_.contains(uid) ||
            (named != changes.files.end() && (named->second.empty() || named->second.size() > mostReadAlone));
        const std::set<QByteArray>* items = named == changes.files.end() ? &none : &named->second;
        changed = updateList(library.collections[uid], uid, list, isAll ? nullptr : items, local) || isNew ||
                  changed;
    }
    return updateDefaults(library) || changed;
}

bool EvolutionStorage::updateDefaults(Library& library) const {
    const auto uidOf = [](ESource* source) {
        const Ref<ESource> owned(source);
        return source ? QByteArray(e_source_get_uid(source)) : QByteArray();
    };
    const auto before = std::tie(library.defaultForReminders, library.defaultForEvents);
    const auto now = std::tuple(uidOf(e_source_registry_ref_default_task_list(registry_.get())),
                                uidOf(e_source_registry_ref_default_calendar(registry_.get())));
    if (before == now)
        return false;
    std::tie(library.defaultForReminders, library.defaultForEvents) = now;
    return true;
}

bool EvolutionStorage::updateList(Collection& collection, const QByteArray& uid, const List& list,
                                  const std::set<QByteArray>* named, const ZoneCalendar& local) {
    ESourceSelectable* const selectable = selectableOf(list.source.get(), list.type);
    const Text color(e_source_selectable_dup_color(selectable));
    const guint order = e_source_selectable_get_order(selectable);
    Collection read{.title = titleOf(list.source.get()),
                    .color = color ? Color::parse(QString::fromUtf8(color.get())) : std::nullopt,
                    .order = order > 0 ? std::optional(static_cast<int>(order)) : std::nullopt,
                    .holdsOnly = list.type};

    QString error;
    EvolutionClient* const client = clientFor(uid, list, error);
    bool changed = false;
    bool isSilent = !client;
    const items::ItemReader reader(uid, local);
    const auto keep = [&](const QByteArray& item, const QByteArray& text) {
        const items::Version version = versionOf(text);
        const auto known = collection.files.try_emplace(item).first;
        ItemFile& file = known->second;
        if (file.version == version)
            return;
        file = reader.read(text, known->first);
        file.version = version;
        changed = true;
    };
    if (client && !named) {
        if (const auto all = client->readAll()) {
            changed = std::erase_if(collection.files,
                                    [&](const auto& file) { return !all->contains(file.first); }) > 0;
            for (const auto& [item, text] : *all)
                keep(item, text);
        } else {
            isSilent = true;
        }
    } else if (client) {
        for (const QByteArray& item : *named) {
            const auto text = client->read(item);
            if (text && *text)
                keep(item, **text);
            else if (text)
                changed = collection.files.erase(item) > 0 || changed;
            isSilent = isSilent || !text;
        }
    }
    if (isSilent) {
        ++silent_[uid];
        read.problem = silentList(read.title, error);
    } else {
        silent_.erase(uid);
        read.isWritable = client->isWritable();
    }
    const auto key = [](const Collection& c) {
        return std::tie(c.title, c.color, c.order, c.isWritable, c.holdsOnly, c.problem);
    };
    if (key(collection) != key(read)) {
        read.files = std::move(collection.files);
        collection = std::move(read);
        changed = true;
    }
    return changed;
}

std::optional<EvolutionStorage::Recheck> EvolutionStorage::recheck() const {
    if (silent_.empty())
        return std::nullopt;
    Recheck result{.after = 60s, .what = {}};
    for (const auto& [uid, times] : silent_) {
        result.after = std::min<Duration>(result.after, 1s * (1 << std::min(times - 1, 6)));
        result.what.files[uid];
    }
    return result;
}

tl::expected<EvolutionClient*, EKError> EvolutionStorage::openClient(const QByteArray& collection) {
    const auto lists = enabledLists();
    const auto list = lists.find(collection);
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    QString error;
    EvolutionClient* const client = clientFor(collection, list->second, error);
    if (!client)
        return tl::unexpected(listDoesNotAnswer(titleOf(list->second.source.get())));
    return client;
}

tl::expected<std::optional<StoredText>, EKError> EvolutionStorage::read(const Place& place) {
    const auto client = openClient(place.collection);
    if (!client)
        return tl::unexpected(client.error());
    auto text = (*client)->read(place.file);
    if (!text) {
        const auto* const error = std::get_if<EKError>(&text.error());
        return tl::unexpected(error ? *error : itemNotFoundError());
    }
    return *text ? std::optional(stored(std::move(**text))) : std::nullopt;
}

std::optional<EKError> EvolutionStorage::reasonNotToChange(const Place&) {
    return std::nullopt;
}

std::optional<WriteError> EvolutionStorage::reasonNotToWrite(const Place& place,
                                                             const items::Version& expected) {
    const auto present = read(place);
    if (!present)
        return present.error();
    if (!*present || (*present)->version != expected)
        return items::ChangedMeanwhile{};
    return std::nullopt;
}

tl::expected<StoredText, WriteError> EvolutionStorage::readBack(const Place& place) {
    auto text = read(place);
    if (!text)
        return tl::unexpected(WriteError(std::move(text.error())));
    if (!*text)
        return tl::unexpected(WriteError(itemNotFoundError()));
    return std::move(**text);
}

tl::expected<StoredText, WriteError> EvolutionStorage::replace(const Place& place, const Document& before,
                                                               const Document& after,
                                                               const items::Version& expected) {
    if (auto reason = reasonNotToWrite(place, expected))
        return tl::unexpected(std::move(*reason));
    const auto client = openClient(place.collection);
    if (!client)
        return tl::unexpected(WriteError(client.error()));
    const QByteArrayView name = (*client)->componentName();
    if (auto error = (*client)->write(place.file, changeBetween(before, after, name), titleIn(before, name)))
        return tl::unexpected(std::move(*error));
    return readBack(place);
}

std::vector<tl::expected<std::optional<StoredText>, EKError>>
EvolutionStorage::readAll(const std::vector<Place>& places) {
    std::map<QByteArray, std::size_t> counts;
    for (const Place& place : places)
        ++counts[place.collection];
    std::map<QByteArray, std::optional<std::map<QByteArray, QByteArray>>> whole;
    for (const auto& [collection, count] : counts) {
        const auto client = count > mostReadAlone ? openClient(collection) : nullptr;
        if (client && *client)
            whole[collection] = (*client)->readAll();
    }
    std::vector<tl::expected<std::optional<StoredText>, EKError>> results;
    results.reserve(places.size());
    for (const Place& place : places) {
        const auto list = whole.find(place.collection);
        if (list == whole.end() || !list->second) {
            results.push_back(read(place));
            continue;
        }
        const auto text = list->second->find(place.file);
        results.push_back(text == list->second->end() ? std::nullopt : std::optional(stored(text->second)));
    }
    return results;
}

std::set<std::size_t> EvolutionStorage::writeTogether(const std::vector<Replacement>& replacements) {
    std::vector<Place> places;
    for (const Replacement& wanted : replacements)
        places.push_back(wanted.place);
    const auto present = readAll(places);
    std::map<QByteArray, std::vector<std::size_t>> lists;
    for (std::size_t i = 0; i < replacements.size(); ++i) {
        if (present[i] && *present[i] && (*present[i])->version == replacements[i].expected)
            lists[replacements[i].place.collection].push_back(i);
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
    }
    return result;
}

std::vector<tl::expected<StoredText, WriteError>>
EvolutionStorage::replaceAll(const std::vector<Replacement>& replacements) {
    const std::set<std::size_t> together =
        replacements.size() > 1 ? writeTogether(replacements) : std::set<std::size_t>();
    std::vector<Place> places;
    for (const std::size_t i : together)
        places.push_back(replacements[i].place);
    auto kept = readAll(places);
    auto next = kept.begin();
    std::vector<tl::expected<StoredText, WriteError>> results;
    results.reserve(replacements.size());
    for (std::size_t i = 0; i < replacements.size(); ++i) {
        const Replacement& wanted = replacements[i];
        if (!together.contains(i)) {
            results.push_back(replace(wanted.place, wanted.before, wanted.after, wanted.expected));
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

std::optional<WriteError> EvolutionStorage::remove(const Place& place, const items::Version& expected) {
    if (auto reason = reasonNotToWrite(place, expected))
        return reason;
    const auto client = openClient(place.collection);
    if (!client)
        return client.error();
    return (*client)->remove(place.file, QString::fromUtf8(place.file));
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
    const auto created =
        (*client)->create(uid, changeBetween(Document::make(), document, (*client)->componentName()));
    if (!created)
        return failed(created.error());
    const Place place{collection, *created};
    auto text = readBack(place);
    if (!text)
        return failed(std::move(text.error()));
    return Created{place, *created, std::move(*text)};
}

tl::expected<QByteArray, EKError> EvolutionStorage::saveCollection(const Library& library,
                                                                   const EKCalendar& calendar) {
    const auto refuse = [](const Error& error) { return tl::unexpected(noService(error.message())); };
    const EKEntityType type = calendar.allowsReminders ? EKEntityType::reminder : EKEntityType::event;
    Error error;
    if (calendar.calendarIdentifier.isEmpty()) {
        const Ref<ESource> source(e_source_new(nullptr, nullptr, error.out()));
        if (!source)
            return refuse(error);
        e_source_set_parent(source.get(), "local-stub");
        e_source_set_display_name(source.get(), calendar.title.toUtf8().constData());
        ESourceSelectable* const selectable = selectableOf(source.get(), type);
        e_source_backend_set_backend_name(E_SOURCE_BACKEND(selectable), "local");
        const Color color = calendar.color.value_or(items::unusedColor(library));
        e_source_selectable_set_color(selectable, color.toString().toUtf8().constData());
        const auto call = limit_.call();
        if (!e_source_registry_commit_source_sync(registry_.get(), source.get(), call.cancellable(),
                                                  error.out()))
            return refuse(error);
        const QByteArray uid = e_source_get_uid(source.get());
        // The process that keeps the items hears of the new list a moment later, and nothing tells when.
        for (auto pause = 5ms; !openClient(uid) && pause < 1s; pause *= 2)
            std::this_thread::sleep_for(pause);
        return uid;
    }
    const auto lists = enabledLists();
    const auto list = lists.find(calendar.calendarIdentifier.toUtf8());
    if (list == lists.end())
        return tl::unexpected(calendarNotFoundError());
    ESource* const source = list->second.source.get();
    if (!e_source_get_writable(source))
        return tl::unexpected(readOnlyError(titleOf(source)));
    e_source_set_display_name(source, calendar.title.toUtf8().constData());
    if (calendar.color)
        e_source_selectable_set_color(selectableOf(source, list->second.type),
                                      calendar.color->toString().toUtf8().constData());
    const auto call = limit_.call();
    if (!e_source_write_sync(source, call.cancellable(), error.out()))
        return refuse(error);
    return list->first;
}

}  // namespace kestrant::evolution
