#include "EventStoreHouses.h"
#include "support/EventBuilders.h"

#include <QStringList>

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

Instant paris(QDate day, QTime time = {0, 0}) {
    return at("Europe/Paris", day, time);
}

const TimeZone parisZone{*TimeZone::named("Europe/Paris")};

template <typename House>
class EventContract : public ::testing::Test {
  protected:
    void open() {
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        work = addCalendar("Work");
    }
    QString addCalendar(const QString& title) {
        return driver.saveCalendar({.title = title, .allowsReminders = false, .allowsEvents = true})
            ->calendarIdentifier;
    }
    EKEventRef add(EKEventData data) {
        data.calendarIdentifier = work;
        return driver.add(data);
    }
    /// A meeting at nine every day, for five days from 27 March on; the clocks change on the 29th.
    EKEventRef addMeetings() {
        EKEventData data = anEvent("")
                               .titled("Meeting")
                               .lasting(paris({2026, 3, 27}, {9, 0}), 1h)
                               .repeating("FREQ=DAILY;COUNT=5");
        data.timeZone = TimeZone::named("Europe/Paris");
        return add(data);
    }
    EKEventRef meetingOn(int day) {
        for (const EKEventRef& event : driver.events(paris({2026, 3, 1}), paris({2026, 5, 1}))) {
            if (event->data.occurrenceDate == paris({2026, 3, day}, {9, 0}))
                return event;
        }
        return nullptr;
    }
    /// What the days from 26 March to 2 April show, as "27 09:00 Meeting".
    std::vector<QString> shown() {
        std::vector<QString> result;
        for (const EKEventRef& event : driver.events(paris({2026, 3, 26}), paris({2026, 4, 2}))) {
            const Instant start = event->data.startDate;
            result.push_back(
                QStringLiteral("%1 %2 %3")
                    .arg(parisZone.dayOf(start).day())
                    .arg(parisZone.timeOf(start).toString(QStringLiteral("HH:mm")), event->data.title));
        }
        return result;
    }

    House house;
    EventStoreDriver driver{house.store, house.scheduler};
    QString work;
};

TYPED_TEST_SUITE(EventContract, Houses);

TYPED_TEST(EventContract, KeepsEveryPropertyOfAnEvent) {
    this->open();
    EKEventData data =
        anEvent("").titled("Dîner; \"chez\" 日本\\語").lasting(paris({2026, 4, 1}, {19, 30}), 2h);
    data.notes = "two\nlines";
    data.location = "Rue de l’Église, 3";
    data.url = "https://example.org/?a=b,c;d";
    data.timeZone = TimeZone::named("America/New_York");
    data.alarms = {EKAlarm{.relativeOffset = -15min}};
    data.creationDate = at("UTC", {2026, 1, 1});
    const EKEventRef saved = this->add(data);
    EXPECT_FALSE(saved->hasChanges());

    const EKEventRef found = this->house.store.event(saved->data.eventIdentifier);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->data, saved->data);
    EXPECT_EQ(found->data.lastModifiedDate, morning);
    ASSERT_EQ(found->data.alarms.size(), 1U);
    EXPECT_EQ(found->data.alarms[0].relativeOffset, -15min);
    EKEventData expected = data;
    expected.calendarItemIdentifier = found->data.calendarItemIdentifier;
    expected.eventIdentifier = found->data.eventIdentifier;
    expected.calendarIdentifier = this->work;
    expected.alarms = found->data.alarms;
    expected.lastModifiedDate = morning;
    EXPECT_EQ(found->data, expected);
    EXPECT_EQ(this->house.store.event("another"), nullptr);
}

TYPED_TEST(EventContract, KeepsEveryKindOfTime) {
    this->open();
    struct Case {
        const char* what;
        Instant start;
        Instant end;
        bool isAllDay;
        const char* zone;
    };
    const Case cases[] = {
        {"a day of 23 hours", paris({2026, 3, 29}), paris({2026, 3, 30}), true, ""},
        {"three days", paris({2026, 3, 28}), paris({2026, 3, 31}), true, ""},
        {"a year and more", paris({2026, 3, 28}), paris({2027, 5, 2}), true, ""},
        {"a floating time", paris({2026, 3, 28}, {9, 0}), paris({2026, 3, 28}, {10, 0}), false, ""},
        {"over the change of the clocks", paris({2026, 3, 28}, {22, 0}), paris({2026, 3, 29}, {6, 0}), false,
         "Europe/Paris"},
        {"in UTC", paris({2026, 3, 28}, {9, 0}), paris({2026, 3, 28}, {9, 1}), false, "UTC"},
        {"no length", paris({2026, 3, 28}, {9, 0}), paris({2026, 3, 28}, {9, 0}), false, "Europe/Paris"},
        {"long ago", at("UTC", {1931, 5, 4}, {3, 0}), at("UTC", {1931, 5, 4}, {4, 0}), false, "UTC"},
    };
    for (const Case& each : cases) {
        EKEventData data = anEvent("").lasting(each.start, each.end);
        data.isAllDay = each.isAllDay;
        data.timeZone = TimeZone::named(each.zone);
        const EKEventRef found = this->house.store.event(this->add(data)->data.eventIdentifier);
        ASSERT_TRUE(found) << each.what;
        EXPECT_EQ(found->data.startDate, each.start) << each.what;
        EXPECT_EQ(found->data.endDate, each.end) << each.what;
        EXPECT_EQ(found->data.isAllDay, each.isAllDay) << each.what;
        EXPECT_EQ(found->data.timeZone, TimeZone::named(each.zone)) << each.what;
    }
}

TYPED_TEST(EventContract, FindsWhatTouchesASpanOfTime) {
    this->open();
    const QString home = this->addCalendar("Home");
    const Instant nine = paris({2026, 3, 27}, {9, 0});
    this->add(anEvent("").titled("hour").lasting(nine, 1h));
    this->add(anEvent("").titled("instant").lasting(nine, 0h));
    EKEventData trip = anEvent("").titled("trip").allDay({2026, 3, 26}, {2026, 3, 28});
    trip.calendarIdentifier = home;
    this->driver.add(trip);

    const auto titles = [&](Instant from, Instant to, std::optional<std::vector<QString>> calendars = {}) {
        QStringList result;
        for (const EKEventRef& event : this->driver.events(from, to, std::move(calendars)))
            result.append(event->data.title);
        return result.join(' ');
    };
    EXPECT_EQ(titles(paris({2026, 3, 25}), paris({2026, 3, 30})), "trip hour instant");
    EXPECT_EQ(titles(paris({2026, 3, 25}), paris({2026, 3, 26})), "");
    EXPECT_EQ(titles(paris({2026, 3, 28}), paris({2026, 3, 29})), "");
    EXPECT_EQ(titles(paris({2026, 3, 27}), nine), "trip");
    EXPECT_EQ(titles(nine, nine + 1s), "trip hour instant");
    EXPECT_EQ(titles(nine + 1s, nine + 2s), "trip hour");
    EXPECT_EQ(titles(nine + 1h, nine + 2h), "trip");
    EXPECT_EQ(titles(paris({2026, 3, 25}), paris({2026, 3, 30}), std::vector{home}), "trip");
    EXPECT_EQ(titles(paris({2026, 3, 25}), paris({2026, 3, 30}), std::vector<QString>{}), "");
}

TYPED_TEST(EventContract, PutsANewEventIntoTheFirstCalendarOrMakesOne) {
    this->open();
    const EKEventRef event = this->driver.add(EKEventData(anEvent("").in("").lasting(morning, 1h)));
    EXPECT_EQ(event->data.calendarIdentifier, this->work);
    EXPECT_EQ(this->house.store.defaultCalendarForNewEvents()->calendarIdentifier, this->work);
    this->house.makeReadOnly(this->work);
    EXPECT_EQ(this->house.store.defaultCalendarForNewEvents(), std::nullopt);
    EXPECT_EQ(codeOf(this->driver.remove(event)), EKError::Code::readOnly);
    event->data.title = "x";
    EXPECT_EQ(codeOf(this->driver.save(event)), EKError::Code::readOnly);
}

TYPED_TEST(EventContract, MakesACalendarWhereThereIsNone) {
    ASSERT_EQ(this->driver.requestAccess(), std::nullopt);
    this->driver.add(aReminder("").titled("x").in(this->driver.addList("Reminders")));
    ASSERT_EQ(this->house.store.defaultCalendarForNewEvents(), std::nullopt);
    const EKEventRef event = this->driver.add(EKEventData(anEvent("").in("").lasting(morning, 1h)));
    EXPECT_EQ(this->house.store.calendarWithIdentifier(event->data.calendarIdentifier)->title, "Calendar");
    EXPECT_EQ(this->house.store.defaultCalendarForNewEvents()->calendarIdentifier,
              event->data.calendarIdentifier);
}

TYPED_TEST(EventContract, FollowsTheRuleOfASeries) {
    this->open();
    const EKEventRef saved = this->addMeetings();
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "28 09:00 Meeting", "29 09:00 Meeting",
                                           "30 09:00 Meeting", "31 09:00 Meeting"));
    EXPECT_EQ(this->house.store.event(saved->data.eventIdentifier)->data.startDate,
              paris({2026, 3, 27}, {9, 0}));
    const EKEventRef third = this->meetingOn(29);
    ASSERT_TRUE(third);
    EXPECT_EQ(third->data.eventIdentifier, saved->data.eventIdentifier);
    EXPECT_EQ(third->data.endDate - third->data.startDate, 1h);
    EXPECT_EQ(third->data.recurrenceRules, saved->data.recurrenceRules);
    EXPECT_FALSE(third->data.isDetached);
    EXPECT_THAT(this->driver.events(paris({2026, 3, 30}, {9, 59}), paris({2026, 3, 31}, {9, 0})),
                ::testing::SizeIs(1));
}

TYPED_TEST(EventContract, ChangesOneOccurrenceAndLeavesTheOthers) {
    this->open();
    this->addMeetings();
    const EKEventRef meeting = this->meetingOn(29);
    meeting->data.title = "Moved";
    meeting->data.startDate += 5h;
    meeting->data.endDate += 6h;
    ASSERT_TRUE(this->driver.save(meeting).has_value());
    EXPECT_FALSE(meeting->hasChanges());
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "28 09:00 Meeting", "29 14:00 Moved",
                                           "30 09:00 Meeting", "31 09:00 Meeting"));
    const EKEventRef again = this->meetingOn(29);
    ASSERT_TRUE(again);
    EXPECT_TRUE(again->data.isDetached);
    EXPECT_TRUE(again->data.hasRecurrenceRules());
    EXPECT_EQ(again->data.endDate - again->data.startDate, 2h);

    again->data.title = "Moved again";
    ASSERT_TRUE(this->driver.save(again).has_value());
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "28 09:00 Meeting", "29 14:00 Moved again",
                                           "30 09:00 Meeting", "31 09:00 Meeting"));
    // The first one may go to the end as well.
    const EKEventRef first = this->meetingOn(27);
    first->data.startDate += 24h * 4;
    first->data.endDate += 24h * 4;
    ASSERT_TRUE(this->driver.save(first).has_value());
    EXPECT_THAT(this->shown(), ElementsAre("28 09:00 Meeting", "29 14:00 Moved again", "30 09:00 Meeting",
                                           "31 09:00 Meeting", "31 10:00 Meeting"));
}

TYPED_TEST(EventContract, RemovesOneOccurrenceAndLeavesTheOthers) {
    this->open();
    this->addMeetings();
    const EKEventRef changed = this->meetingOn(28);
    changed->data.title = "Changed";
    ASSERT_TRUE(this->driver.save(changed).has_value());
    const EKEventRef last = this->meetingOn(31);
    for (const EKEventRef& doomed : {changed, this->meetingOn(30), last})
        ASSERT_TRUE(this->driver.remove(doomed).has_value());
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "29 09:00 Meeting"));
    EXPECT_EQ(codeOf(this->driver.remove(last)), EKError::Code::itemNotFound);
    last->data.title = "x";
    EXPECT_EQ(codeOf(this->driver.save(last)), EKError::Code::itemNotFound);
    for (const int day : {27, 29})
        ASSERT_TRUE(this->driver.remove(this->meetingOn(day)).has_value());
    EXPECT_THAT(this->shown(), IsEmpty());
}

TYPED_TEST(EventContract, MovesAnEventToAnotherCalendar) {
    this->open();
    const QString home = this->addCalendar("Home");
    const EKEventRef event = this->add(anEvent("").titled("Lunch").lasting(morning, 1h));
    const QString identifier = event->data.eventIdentifier;
    event->data.calendarIdentifier = home;
    event->data.title = "Brunch";
    ASSERT_TRUE(this->driver.save(event).has_value());
    EXPECT_EQ(event->data.eventIdentifier, identifier);
    EXPECT_EQ(this->house.store.event(identifier)->data.calendarIdentifier, home);
    EXPECT_THAT(this->shown(), ElementsAre("27 08:00 Brunch"));
    event->data.calendarIdentifier = "nowhere";
    EXPECT_EQ(codeOf(this->driver.save(event)), EKError::Code::calendarNotFound);
}

TYPED_TEST(EventContract, MakesAnOccurrenceThatChangesItsCalendarAnEventOfItsOwn) {
    this->open();
    const QString home = this->addCalendar("Home");
    const QString series = this->addMeetings()->data.eventIdentifier;
    for (const bool isChanged : {false, true}) {
        const EKEventRef meeting = this->meetingOn(isChanged ? 30 : 28);
        if (isChanged) {
            meeting->data.location = "Here";
            ASSERT_TRUE(this->driver.save(meeting).has_value());
        }
        meeting->data.calendarIdentifier = home;
        meeting->data.title = "At home";
        const auto answer = this->driver.save(meeting);
        ASSERT_TRUE(answer.has_value());
        EXPECT_NE(meeting->data.eventIdentifier, series);
        EXPECT_EQ(answer->calendarItemIdentifier, meeting->data.calendarItemIdentifier);
        EXPECT_FALSE(meeting->data.hasRecurrenceRules() || meeting->data.occurrenceDate ||
                     meeting->data.isDetached);
        EXPECT_EQ(meeting->data.calendarIdentifier, home);
    }
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "28 09:00 At home", "29 09:00 Meeting",
                                           "30 09:00 At home", "31 09:00 Meeting"));
    EXPECT_EQ(this->meetingOn(28), nullptr);
}

TYPED_TEST(EventContract, MergesWhatOthersChangedOrRefuses) {
    this->open();
    this->addMeetings();
    this->add(anEvent("").titled("Lunch").lasting(morning, 1h));
    for (const bool ofSeries : {false, true}) {
        const auto inHand = [&] {
            return ofSeries ? this->meetingOn(28) : this->driver.events(morning, morning + 1s).front();
        };
        const EKEventRef ours = inHand();
        const EKEventRef theirs = inHand();
        theirs->data.notes = "theirs";
        theirs->data.title = "Theirs";
        ASSERT_TRUE(this->driver.save(theirs).has_value());
        ours->data.location = "ours";
        ASSERT_TRUE(this->driver.save(ours).has_value());
        EXPECT_EQ(ours->data.notes, "theirs");
        EXPECT_EQ(inHand()->data, ours->data);

        theirs->data.endDate += 1h;
        EXPECT_TRUE(this->driver.save(theirs).has_value());
        ours->data.startDate -= 1h;
        EXPECT_EQ(codeOf(this->driver.save(ours)), EKError::Code::conflict);
        EXPECT_EQ(inHand()->data, theirs->data);
    }
}

TYPED_TEST(EventContract, RefusesValuesThatMakeNoSense) {
    this->open();
    const EKEventData event = anEvent("").in(qPrintable(this->work)).lasting(morning, 1h);
    const auto codeFor = [&](auto change) {
        const auto made = std::make_shared<EKEvent>();
        made->data = event;
        change(made->data);
        return codeOf(this->driver.save(made));
    };
    EXPECT_EQ(codeFor([](EKEventData& data) { data.endDate -= 2h; }), EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKEventData& data) { data.endDate += std::chrono::years(9000); }),
              EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKEventData& data) {
                  data.recurrenceRules = {EKRecurrenceRule::parse("FREQ=DAILY;COUNT=-1")};
              }),
              EKError::Code::invalidItem);
    EXPECT_EQ(codeFor([](EKEventData& data) { data.calendarIdentifier = "nowhere"; }),
              EKError::Code::calendarNotFound);
    EXPECT_THAT(this->shown(), IsEmpty());

    this->addMeetings();
    const EKEventRef meeting = this->meetingOn(28);
    meeting->data.recurrenceRules.clear();
    EXPECT_EQ(codeOf(this->driver.save(meeting)), EKError::Code::invalidItem);
}

TYPED_TEST(EventContract, TurnsATimeIntoADayAndBack) {
    this->open();
    const EKEventRef event = this->add(anEvent("").lasting(morning, 1h));
    event->data.isAllDay = true;
    event->data.startDate = paris({2026, 3, 27});
    event->data.endDate = paris({2026, 3, 29});
    ASSERT_TRUE(this->driver.save(event).has_value());
    EXPECT_EQ(this->house.store.event(event->data.eventIdentifier)->data, event->data);
    EXPECT_TRUE(event->data.isAllDay);
    EXPECT_EQ(event->data.endDate, paris({2026, 3, 29}));

    event->data.isAllDay = false;
    event->data.timeZone = TimeZone::named("Europe/Paris");
    event->data.startDate = morning;
    event->data.endDate = morning + 30min;
    ASSERT_TRUE(this->driver.save(event).has_value());
    EXPECT_EQ(event->data.endDate, morning + 30min);
    EXPECT_EQ(event->data.timeZone, TimeZone::named("Europe/Paris"));
}

/// Each change is taken back, made again, and taken back once more.
TYPED_TEST(EventContract, TakesBackWhatItDidToAnEvent) {
    this->open();
    const QString home = this->addCalendar("Home");
    this->addMeetings();
    const auto changed = this->meetingOn(29);
    changed->data.title = "Changed";
    ASSERT_TRUE(this->driver.save(changed).has_value());
    this->add(anEvent("").titled("Lunch").lasting(morning, 1h));
    const auto lunch = [&] {
        const auto found = this->driver.events(paris({2026, 3, 1}), paris({2026, 5, 1}));
        return *std::find_if(found.begin(), found.end(), [](const auto& event) {
            return !event->data.hasRecurrenceRules() && !event->data.occurrenceDate;
        });
    };
    const auto saved = [&](const EKEventRef& event, auto change) {
        change(event->data);
        return this->driver.save(event);
    };
    const auto rename = [](EKEventData& data) { data.title = "Renamed"; };
    const auto moveHome = [&](EKEventData& data) { data.calendarIdentifier = home; };
    struct Case {
        const char* what;
        std::function<EventStoreDriver::SaveAnswer()> change;
    };
    const std::vector<Case> cases{
        {"new",
         [&] {
             return saved(std::make_shared<EKEvent>(), [&](EKEventData& data) {
                 data = anEvent("").titled("New").lasting(morning + 2h, 1h);
                 data.calendarIdentifier = home;
             });
         }},
        {"renamed", [&] { return saved(lunch(), rename); }},
        {"moved", [&] { return saved(lunch(), moveHome); }},
        {"removed", [&] { return this->driver.remove(lunch()); }},
        {"one of a series renamed", [&] { return saved(this->meetingOn(28), rename); }},
        {"a changed one renamed", [&] { return saved(this->meetingOn(29), rename); }},
        {"one of a series moved", [&] { return saved(this->meetingOn(30), moveHome); }},
        {"one of a series removed", [&] { return this->driver.remove(this->meetingOn(28)); }},
        {"a changed one removed", [&] { return this->driver.remove(this->meetingOn(29)); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        const auto before = this->shown();
        auto done = each.change();
        ASSERT_TRUE(done.has_value());
        const auto after = this->shown();
        for (const auto& expected : {before, after, before}) {
            done = this->driver.revert(*done);
            ASSERT_TRUE(done.has_value()) << qPrintable(done.error().message.english);
            EXPECT_EQ(this->shown(), expected);
        }
    }
    EXPECT_EQ(this->house.store.event(lunch()->data.eventIdentifier)->data.calendarIdentifier, this->work);
}

TYPED_TEST(EventContract, TakesNothingBackThatOthersHaveChanged) {
    this->open();
    this->addMeetings();
    const auto edit = [&](int day, auto change) {
        const EKEventRef meeting = this->meetingOn(day);
        change(meeting->data);
        return this->driver.save(meeting);
    };
    const auto renamed = edit(28, [](EKEventData& data) { data.title = "Ours"; });
    const auto placed = edit(29, [](EKEventData& data) { data.location = "Here"; });
    const auto removed = this->driver.remove(this->meetingOn(30));
    const auto lunch = std::make_shared<EKEvent>();
    lunch->data = anEvent("").titled("Lunch").lasting(morning, 1h);
    lunch->data.calendarIdentifier = this->work;
    const auto made = this->driver.save(lunch);
    const EKEventRef theirs = this->house.store.event(lunch->data.eventIdentifier);
    theirs->data.notes = "theirs";
    ASSERT_TRUE(this->driver.save(theirs).has_value());
    EXPECT_EQ(codeOf(this->driver.revert(*made)), EKError::Code::conflict);
    ASSERT_TRUE(this->driver.remove(theirs).has_value());
    const auto tea = std::make_shared<EKEvent>();
    tea->data = anEvent("").titled("Tea").lasting(morning + 5h, 1h);
    tea->data.calendarIdentifier = this->work;
    const auto brewed = this->driver.save(tea);
    tea->data.calendarIdentifier = this->addCalendar("Home");
    ASSERT_TRUE(this->driver.save(tea).has_value());
    EXPECT_EQ(codeOf(this->driver.revert({tea->data.calendarItemIdentifier, std::nullopt, brewed->change})),
              EKError::Code::conflict)
        << "it has moved to another calendar";
    ASSERT_TRUE(this->driver.remove(tea).has_value());
    ASSERT_TRUE(edit(28, [](EKEventData& data) { data.title = "Theirs"; }).has_value());
    ASSERT_TRUE(edit(29, [](EKEventData& data) { data.location = "There"; }).has_value());
    EXPECT_EQ(codeOf(this->driver.revert(*renamed)), EKError::Code::conflict);
    EXPECT_EQ(codeOf(this->driver.revert(*placed)), EKError::Code::conflict);
    EXPECT_TRUE(this->driver.revert(*removed).has_value());
    EXPECT_THAT(this->shown(), ElementsAre("27 09:00 Meeting", "28 09:00 Theirs", "29 09:00 Meeting",
                                           "30 09:00 Meeting", "31 09:00 Meeting"));
}

TYPED_TEST(EventContract, RemovesAnEventAndTellsOfIt) {
    this->open();
    const EKEventRef event = this->add(anEvent("").lasting(morning, 1h));
    this->house.scheduler.runPosted();
    int told = 0;
    const Subscription subscription = this->house.store.observeChanges([&] { ++told; });
    ASSERT_TRUE(this->driver.remove(event).has_value());
    this->house.scheduler.runPosted();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(this->house.store.event(event->data.eventIdentifier), nullptr);
    EXPECT_THAT(this->shown(), IsEmpty());
    EXPECT_EQ(codeOf(this->driver.remove(event)), EKError::Code::itemNotFound);
    EXPECT_EQ(codeOf(this->driver.remove(std::make_shared<EKEvent>())), EKError::Code::itemNotFound);
}

}  // namespace
}  // namespace kestrant
