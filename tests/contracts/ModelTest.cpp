#include "ModelEvents.h"
#include "ModelReminders.h"

#include <QStringList>

#include <algorithm>
#include <cstdlib>

// Random sequences of changes by the person and by other programs on the same data, compared with a model
// after each step and with a fresh read of the data. A failing sequence is shrunk and printed.
//
// KESTRANT_MODEL_RUNS=500 makes that many runs of 60 steps for each database, beginning with the seed
// KESTRANT_MODEL_SEED (1 when absent); without it there are a few short ones.

namespace kestrant {
namespace {

using namespace model;
using namespace std::chrono_literals;

/// One sequence of steps on one database and on the model.
template <typename House>
class Run {
  public:
    /// What went wrong, or an empty text.
    QString of(const std::vector<Step>& steps) {
        if (world_.driver.requestAccess())
            return "no access";
        for (const char* title : {"A", "B"}) {
            world_.lists.push_back(world_.driver.addList(title));
            world_.calendars.push_back(
                world_.driver.saveCalendar({.title = title, .allowsReminders = false, .allowsEvents = true})
                    ->calendarIdentifier);
        }
        if (!steps.empty() && steps.front().value % 2)
            others_.renewIdentifiers();
        for (std::size_t i = 0; i < steps.size(); ++i) {
            QString failure = take(steps[i]);
            const bool isLast = i + 1 == steps.size();
            const bool isUnnoticed = steps[i].isUnnoticed && steps[i].kind != Kind::othersJoin;
            if (failure.isEmpty() && (isLast || !isUnnoticed || !world_.isUnsettled))
                failure = settle();
            if (failure.isEmpty() && (isLast || Others<House>::readsFast))
                failure = compareWithFreshRead();
            if (!failure.isEmpty()) {
                length_ = i + 1;
                return failure;
            }
        }
        return {};
    }
    [[nodiscard]] QString log() const { return world_.log.join("\n"); }
    /// How many steps were taken until it went wrong.
    [[nodiscard]] std::size_t length() const { return length_; }

  private:
    QString take(const Step& step) {
        switch (step.kind) {
        case Kind::addEvent:
        case Kind::editEvent:
        case Kind::moveEvent:
        case Kind::removeEvent:
        case Kind::removeSeries:
        case Kind::takeEvent:
        case Kind::saveEventInHand:
        case Kind::takeBackEvent:
            return events_.take(step);
        case Kind::othersChangeEvent:
        case Kind::othersRemoveEvent:
            events_.takeByOthers(step);
            return {};
        case Kind::othersChange:
        case Kind::othersRemove:
        case Kind::othersAdd:
        case Kind::othersTouch:
        case Kind::othersMove:
        case Kind::othersNote:
        case Kind::othersJoin:
            reminders_.takeByOthers(step);
            return {};
        default:
            return reminders_.take(step);
        }
    }

    template <typename Reminders, typename Events>
    QString difference(const Reminders& reminders, const Events& events) const {
        std::map<QString, Values> expected = reminders_.byIdentifier();
        for (const auto& each : reminders) {
            const auto found = expected.find(each.calendarItemIdentifier);
            if (found == expected.end())
                return "not in the model: " + shown(world_.valuesOf(each));
            if (without(found->second, "unknown") != world_.valuesOf(each))
                return "shown " + shown(world_.valuesOf(each)) + "; expected " + shown(found->second);
            expected.erase(found);
        }
        if (!expected.empty())
            return "missing: " + shown(expected.begin()->second);
        auto expectedEvents = events_.byKey();
        for (const EKEventData& each : events) {
            const auto found = expectedEvents.find(keyOf(each));
            if (found == expectedEvents.end())
                return "not in the model: the event " + shown(world_.valuesOf(each));
            if (found->second != world_.valuesOf(each))
                return "shown " + shown(world_.valuesOf(each)) + "; expected " + shown(found->second);
            expectedEvents.erase(found);
        }
        return expectedEvents.empty() ? QString()
                                      : "missing: the event " + shown(expectedEvents.begin()->second);
    }
    QString compare() {
        std::vector<EKReminderData> reminders;
        for (const auto& predicate : {EKEventStore::predicateForIncompleteReminders({}, {}, {}),
                                      EKEventStore::predicateForCompletedReminders({}, {}, {})}) {
            for (const EKReminderRef& reminder : world_.driver.fetch(predicate))
                reminders.push_back(reminder->data);
        }
        std::vector<EKEventData> events;
        for (const EKEventRef& event : events_.shown())
            events.push_back(event->data);
        return difference(reminders, events);
    }
    /// Waits until the store shows what others did; the person's own changes show at once.
    QString settle() {
        // What is told while the comparison waits for its answers counts too.
        bool told = false;
        const Subscription subscription = house_.store.observeChanges([&] { told = true; });
        QString failure = compare();
        auto& scheduler = house_.scheduler;
        for (int i = 0; i < 100 && world_.isUnsettled && !failure.isEmpty(); ++i) {
            if (!scheduler.runUntil([&] { return told || scheduler.pendingCount() > 0; }))
                break;
            scheduler.advance(1s);
            told = false;
            failure = compare();
        }
        world_.isUnsettled = false;
        reminders_.settled();
        return failure;
    }
    QString compareWithFreshRead() {
        const auto read = others_.read();
        QString failure = read ? difference(read->reminders, read->events) : QString();
        if (failure.isEmpty() && read && read->unknown != reminders_.unknown())
            failure = "unknown properties are not as others wrote them";
        return failure.isEmpty() ? failure : "after a fresh read: " + failure;
    }

    House house_;
    Others<House> others_{house_};
    World world_{house_.store, house_.scheduler, others_};
    ModelReminders reminders_{world_};
    ModelEvents events_{world_};
    std::size_t length_ = 0;
};

/// Leaves steps out, as many at once as will do, while it goes on failing; absent where it does not fail
/// again.
template <typename House>
std::optional<QString> shrunk(std::vector<Step> steps) {
    QString report;
    const auto fails = [&](const std::vector<Step>& tried) {
        Run<House> run;
        const QString failure = run.of(tried);
        if (!failure.isEmpty()) {
            report = run.log() + "\n" + failure;
            steps.assign(tried.begin(), tried.begin() + static_cast<std::ptrdiff_t>(run.length()));
        }
        return !failure.isEmpty();
    };
    if (!fails(std::vector<Step>(steps)))
        return std::nullopt;
    for (std::size_t size = steps.size() / 2; size > 0;) {
        const std::size_t before = steps.size();
        for (std::size_t first = 0; first + size <= steps.size();) {
            std::vector<Step> fewer = steps;
            fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(first),
                        fewer.begin() + static_cast<std::ptrdiff_t>(first + size));
            if (!fails(fewer))
                first += size;
        }
        if (steps.size() == before)
            size /= 2;
    }
    return report;
}

template <typename House>
class Model : public ::testing::Test {};
TYPED_TEST_SUITE(Model, ModelHouses);

TYPED_TEST(Model, AgreesWithTheDatabaseAfterEveryStep) {
    const auto number = [](const char* name) {
        const char* text = std::getenv(name);
        return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : 0U;
    };
    const unsigned first = std::max(1U, number("KESTRANT_MODEL_SEED"));
    const unsigned asked = number("KESTRANT_MODEL_RUNS");
    const unsigned runs = asked ? asked : Others<TypeParam>::runs;
    for (unsigned seed = first; seed < first + runs; ++seed) {
        const auto steps = stepsOf(seed, asked ? 60 : Others<TypeParam>::steps);
        QString failure;
        QString log;
        {
            Run<TypeParam> run;
            failure = run.of(steps);
            log = run.log();
        }
        ASSERT_TRUE(failure.isEmpty())
            << "seed " << seed << ": " << qPrintable(failure) << "\n"
            << qPrintable(shrunk<TypeParam>(steps).value_or("It does not fail again.\n" + log));
    }
}

}  // namespace
}  // namespace kestrant
