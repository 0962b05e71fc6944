#pragma once

#include "calendar/CalendarGrouping.h"
#include "calendar/CalendarItems.h"
#include "foundation/Scheduler.h"
#include "foundation/Subscription.h"
#include "foundation/Text.h"

#include <QObject>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

namespace kestrant {

class CalendarDays;
struct CalendarItems;
struct CalendarStoreServices;
struct EKError;

/// Access to the database, and the loading of days: the coming week, or the full calendar, which grows on
/// request. A load that was overtaken by another one shows nothing. Thread: main.
class CalendarLoader : public QObject {
    Q_OBJECT

  public:
    /// Both outlive this object.
    CalendarLoader(const CalendarStoreServices& services, CalendarDays& days);
    ~CalendarLoader() override;

    [[nodiscard]] const CalendarAccessState& accessState() const { return accessState_; }
    [[nodiscard]] bool isAuthorized() const {
        return accessState_.kind == CalendarAccessState::Kind::authorized;
    }
    void requestAccess();
    void databaseWasExchanged();

    [[nodiscard]] bool isLoading() const { return isLoading_; }
    [[nodiscard]] bool hasLoaded() const { return hasLoaded_; }
    /// Rows that are farthest from today were left out.
    [[nodiscard]] bool isCut() const { return isCut_; }
    void reload();

    [[nodiscard]] bool showsAllEvents() const { return showsAllEvents_; }
    void setShowsAllEvents(bool value);
    void loadMore(bool earlier);
    [[nodiscard]] bool isLoadingMoreEvents() const { return isLoadingMoreEvents_; }
    /// Days and not instants, so that they stay whole days when the time zone changes.
    [[nodiscard]] const std::optional<DayRange>& loadedCalendarRange() const { return loadedCalendarRange_; }
    [[nodiscard]] bool needsManualLoadEarlier() const { return needsManualLoadEarlier_; }
    [[nodiscard]] bool needsManualLoadLater() const { return needsManualLoadLater_; }

  Q_SIGNALS:
    void accessStateChanged();
    void isCutChanged();
    void isLoadingChanged();
    void showsAllEventsChanged();
    void isLoadingMoreEventsChanged();
    void needsManualLoadChanged();

  private:
    struct Request;
    struct Result;
    using Done = std::function<void(const Result&)>;

    static Result resultOf(const Request& request, const CalendarItems& items, const CalendarPresent& present,
                           const QList<CalendarDayGroup>& onShow);
    void observe();
    [[nodiscard]] CalendarPresent present() const;
    void accessAnswered(bool granted, const std::optional<EKError>& error);
    /// `done` is not called when another fetch was started meanwhile.
    void fetch(const Request& request, const Done& done);
    /// Sets a published value and tells so when it is another one.
    template <typename Value>
    void publish(Value& field, const std::type_identity_t<Value>& value, void (CalendarLoader::*signal)()) {
        if (field == value)
            return;
        field = value;
        Q_EMIT(this->*signal)();
    }

    const CalendarStoreServices& services_;
    CalendarDays& days_;
    CalendarAccessState accessState_;
    bool isLoading_ = false;
    bool hasLoaded_ = false;
    bool showsAllEvents_ = false;
    bool isLoadingMoreEvents_ = false;
    bool needsManualLoadEarlier_ = false;
    bool needsManualLoadLater_ = false;
    bool isCut_ = false;
    std::optional<DayRange> loadedCalendarRange_;
    /// Counts the databases, so that the answer of a former one to a request for access is known.
    int accessGeneration_ = 0;
    /// Counts fetches; shared with the work they give away, which ends when its fetch is no longer the last.
    std::shared_ptr<std::atomic<int>> fetchGeneration_ = std::make_shared<std::atomic<int>>(0);
    ScheduledTask reloadTask_;
    std::vector<Subscription> observers_;
};

}  // namespace kestrant
