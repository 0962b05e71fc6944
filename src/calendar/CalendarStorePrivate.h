#pragma once

#include "calendar/CalendarStore.h"
#include "eventkit/model/EKEventStore.h"
#include "foundation/Subscription.h"

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

namespace kestrant {

// What the sources of CalendarStore share: loading is in one, changes are in another.

/// What is wanted of the database and what becomes of it.
struct FetchRequest {
    /// What to read.
    DayRange fetched;
    /// The days to show of it.
    DayRange shown;
    CalendarMode mode = CalendarMode::compact;
    /// The groups are added to those on show and do not take their place.
    bool isExtension = false;
};

/// What came of a fetch, made away from the main thread.
struct FetchResult {
    QList<CalendarDayGroup> groups;
    /// The moment for which they are right.
    Instant moment;
    /// The groups differ from those that were on show when the fetch was started.
    bool isChange = false;
    /// The fetch itself added no group.
    bool isEmpty = false;
    /// Rows that are farthest from today were left out.
    bool isCut = false;
};

class CalendarStore::Private : public std::enable_shared_from_this<Private> {
  public:
    Private(CalendarStore& store, CalendarStoreServices storeServices)
        : q(store)
        , services(std::move(storeServices)) {}

    void observe();
    /// `member` as a callback that does nothing once the store is gone.
    template <typename Member>
    auto whileAlive(Member member) {
        return [weak = weak_from_this(), member = std::move(member)](auto&&... arguments) {
            if (const auto self = weak.lock())
                std::invoke(member, *self, std::forward<decltype(arguments)>(arguments)...);
        };
    }
    /// Sets a published value and tells so when it is another one.
    template <typename Value>
    void publish(Value& field, const std::type_identity_t<Value>& value, void (CalendarStore::*signal)()) {
        if (field == value)
            return;
        field = value;
        Q_EMIT(q.*signal)();
    }

    [[nodiscard]] CalendarPresent present() const;
    [[nodiscard]] bool isAuthorized() const {
        return accessState.kind == CalendarAccessState::Kind::authorized;
    }
    void requestAccess();
    void databaseWasExchanged();
    void accessAnswered(bool granted, const std::optional<EKError>& error);

    void reload();
    void loadMore(bool earlier);
    using FetchDone = std::function<void(Private&, const FetchResult&)>;
    /// `done` is not called when another fetch was started meanwhile.
    void fetch(const FetchRequest& request, const FetchDone& done);
    void fetched(const FetchResult& result, CalendarMode mode);
    void show(const QList<CalendarDayGroup>& groups);
    void waitForChange();
    void catchUp();

    /// Hands over the event behind a row on a later turn; null when there is none.
    void findEvent(const CalendarEventItem& row, std::function<void(Private&, const EKEventRef&)> done);
    struct RecordedChange;
    using RecordedChangeRef = std::shared_ptr<RecordedChange>;
    void save(const EKEventRef& event, const char* notification, const RecordedChangeRef& recorded,
              const Completion& completion);
    /// The end of every successful change.
    void changed(const char* notification, const Completion& completion);
    /// The end of every successful removal: the row goes at once, the load follows.
    void removed(const CalendarEventItem& row, const Completion& completion);
    [[nodiscard]] EKEventStore::SaveCompletion
    removalEnd(const CalendarEventItem& row, const RecordedChangeRef& recorded, const Completion& completion);
    /// Hands over a failure on a later turn.
    void fail(const Completion& completion, const CalendarError& error);

    // What can be taken back

    enum class OutcomeSubject { whole, oneOfSeries };
    /// The sentence with the title in it, and with the words for one occurrence of a series.
    [[nodiscard]] static TextPair outcomeOf(const TextPair& sentence, const QString& title,
                                            OutcomeSubject subject);
    /// For a change that is about to be written.
    [[nodiscard]] RecordedChangeRef beginAction(const TextPair& title, const TextPair& outcome);
    /// Records it, if it was written. `identifier` is the one it was asked for with.
    void endAction(const RecordedChangeRef& recorded, const QString& identifier,
                   const tl::expected<EKSaveResult, EKError>& result);
    /// Takes the change back, or makes it again.
    void replay(const RecordedChangeRef& recorded,
                const std::function<void(tl::expected<void, EKError>)>& done);
    /// What recorded changes call an item by, whatever its identifier becomes.
    [[nodiscard]] std::shared_ptr<QString> referenceTo(const QString& identifier);

    CalendarStore& q;
    CalendarStoreServices services;
    CalendarAccessState accessState;
    QList<CalendarDayGroup> dayGroups;
    bool isLoading = false;
    bool hasLoaded = false;
    bool showsAllEvents = false;
    bool isLoadingMoreEvents = false;
    bool needsManualLoadEarlier = false;
    bool needsManualLoadLater = false;
    bool isCut = false;
    /// Days and not instants, so that they stay whole days when the time zone changes.
    std::optional<DayRange> loadedCalendarRange;
    /// Counts the databases, so that the answer of a former one to a request for access is known.
    int accessGeneration = 0;
    /// Counts fetches; shared with the work they give away, which ends when its fetch is no longer the last.
    std::shared_ptr<std::atomic<int>> fetchGeneration = std::make_shared<std::atomic<int>>(0);
    /// For which moment and in which mode `dayGroups` was made.
    Instant shownMoment;
    CalendarMode shownMode = CalendarMode::compact;
    ScheduledTask reloadDebounceTask;
    ScheduledTask changeTask;
    std::map<QString, std::weak_ptr<QString>> references;
    std::vector<Subscription> observers;
};

}  // namespace kestrant
