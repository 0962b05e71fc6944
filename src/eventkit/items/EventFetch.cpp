#include "eventkit/items/EventFetch.h"

#include "eventkit/model/EventChanges.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrant::items {
namespace {

/// Enough for a date a day in some years.
constexpr qint64 stepsOfEverySeries = 3'000;

/// An event that matches, not yet with its values where a series has to make them.
struct Match {
    Duration distance{};
    std::shared_ptr<const EKEventData> single;
    const EventSeries* series = nullptr;
    EventSeries::Date date;
};

Duration distanceBetween(Instant start, Instant end, Instant now) {
    return start > now ? start - now : end < now ? now - end : Duration::zero();
}

/// The matches nearest to the present.
class NearestMatches {
  public:
    explicit NearestMatches(std::size_t most) : most_(most) {}

    /// Whether something this far away would be kept.
    [[nodiscard]] bool wants(Duration distance) const { return distance < limit_; }
    [[nodiscard]] bool isCut() const { return isCut_; }

    void add(Match match) {
        if (!wants(match.distance)) {
            isCut_ = true;
            return;
        }
        matches_.push_back(std::move(match));
        if (matches_.size() >= 2 * most_)
            trim();
    }
    [[nodiscard]] std::vector<Match> taken() {
        trim();
        return std::move(matches_);
    }

  private:
    void trim() {
        if (matches_.size() <= most_)
            return;
        const auto end = matches_.begin() + static_cast<std::ptrdiff_t>(most_);
        std::nth_element(matches_.begin(), end, matches_.end(),
                         [](const Match& a, const Match& b) { return a.distance < b.distance; });
        limit_ = end->distance;
        matches_.erase(end, matches_.end());
        isCut_ = true;
    }

    std::size_t most_;
    Duration limit_ = Duration::max();
    bool isCut_ = false;
    std::vector<Match> matches_;
};

class Fetch {
  public:
    Fetch(const EKEventPredicate& predicate, Instant now, const FetchBudget& budget)
        : predicate_(predicate)
        , now_(now)
        , budget_(budget)
        , matches_(budget.events) {}

    EventsFound run(const Snapshot& snapshot) {
        snapshot.singleEvents.forEachTouching(
            predicate_.start, predicate_.end, [&](const std::shared_ptr<const EKEventData>& single) {
                if (matches(predicate_, *single))
                    matches_.add(
                        {distanceBetween(single->startDate, single->endDate, now_), single, nullptr, {}});
            });
        snapshot.ruledEvents.forEachTouching(predicate_.start, predicate_.end,
                                             [&](const std::shared_ptr<const EventSeries>& series) {
                                                 if (isWanted(series->calendarIdentifier()))
                                                     expand(series);
                                             });
        for (Unfinished& each : std::exchange(unfinished_, {}))
            expandFurther(std::move(each));
        result_.found.isCut = result_.found.isCut || matches_.isCut();
        for (Match& match : matches_.taken())
            result_.found.events.push_back(match.single ? std::move(match.single)
                                                        : match.series->dataOf(match.date));
        return std::move(result_);
    }

  private:
    struct Unfinished {
        std::shared_ptr<const EventSeries> series;
        std::vector<Match> matches;
    };

    [[nodiscard]] bool isWanted(const QString& calendar) const {
        return !predicate_.calendars || std::find(predicate_.calendars->begin(), predicate_.calendars->end(),
                                                  calendar) != predicate_.calendars->end();
    }

    /// The matches of a series within so many steps; those that are too far away for the answer are left out.
    [[nodiscard]] std::vector<Match> matchesOf(const EventSeries& series, qint64 steps,
                                               EventSeries::Cost& cost) {
        std::vector<Match> result;
        cost = series.forEachRecurring(
            {predicate_.start, predicate_.end, now_},
            [&](const EventSeries::Date& date) {
                if (!touches(predicate_, date.interval))
                    return true;
                const Duration distance = distanceBetween(date.interval.start, date.interval.end, now_);
                if (!matches_.wants(distance)) {
                    result_.found.isCut = true;
                    return false;
                }
                result.push_back({distance, nullptr, &series, date});
                return true;
            },
            steps);
        result_.steps += cost.steps;
        return result;
    }

    void keep(std::vector<Match>& found) {
        for (Match& match : found)
            matches_.add(std::move(match));
    }

    void expand(const std::shared_ptr<const EventSeries>& series) {
        EventSeries::Cost cost;
        std::vector<Match> found = matchesOf(*series, stepsOfEverySeries, cost);
        if (cost.isExceeded)
            unfinished_.push_back({series, std::move(found)});
        else
            keep(found);
    }

    void expandFurther(Unfinished unfinished) {
        EventSeries::Cost cost{.isExceeded = true};
        const qint64 most = std::min(EventSeries::mostSteps, budget_.steps - result_.steps);
        if (most > stepsOfEverySeries)
            unfinished.matches = matchesOf(*unfinished.series, most, cost);
        keep(unfinished.matches);
        if (!cost.isExceeded)
            return;
        result_.found.isCut = true;
        result_.costly.push_back(unfinished.series);
    }

    const EKEventPredicate& predicate_;
    Instant now_;
    FetchBudget budget_;
    NearestMatches matches_;
    std::vector<Unfinished> unfinished_;
    EventsFound result_;
};

}  // namespace

EventsFound fetchEvents(const Snapshot& snapshot, const EKEventPredicate& predicate, Instant now,
                        const FetchBudget& budget) {
    return Fetch(predicate, now, budget).run(snapshot);
}

}  // namespace kestrant::items
