#include "contracts/EvolutionHouse.h"
#include "support/EventStoreDriver.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

Instant paris(QDate day, QTime time = {0, 0}) {
    return at("Europe/Paris", day, time);
}

class EvolutionWriting : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(driver.requestAccess(), std::nullopt);
        list = driver.addList("Groceries");
        calendar = driver.saveCalendar({.title = "Work", .allowsReminders = false, .allowsEvents = true})
                       ->calendarIdentifier;
    }
    [[nodiscard]] EKReminderRef reminder(const QString& identifier) {
        return house.store.calendarItem(identifier);
    }
    [[nodiscard]] EKEventRef eventOn(QDate day) {
        const auto events = driver.events(paris(day), paris(day.addDays(1)));
        return events.empty() ? nullptr : events.front();
    }

    EvolutionHouse house;
    EventStoreDriver driver{house.store, house.scheduler};
    QString list;
    QString calendar;
};

/// What is in one only.
template <typename Set>
std::vector<QByteArray> without(const Set& all, const Set& taken) {
    std::vector<QByteArray> result;
    std::set_difference(all.begin(), all.end(), taken.begin(), taken.end(), std::back_inserter(result));
    return result;
}

const QByteArray richTask = "BEGIN:VTODO\r\n"
                            "UID:rich\r\n"
                            "DTSTAMP:20260101T000000Z\r\n"
                            "CREATED:20250101T000000Z\r\n"
                            "SUMMARY;LANGUAGE=en:old\r\n"
                            "DUE;TZID=Europe/Paris:20260330T090000\r\n"
                            "CATEGORIES:a\r\n"
                            "RELATED-TO;RELTYPE=PARENT:another\r\n"
                            "X-APPLE-SORT-ORDER:1234\r\n"
                            "X-SOMETHING;X-PARAMETER=yes:kept\\, as it is\r\n"
                            "GEO:48.85;2.35\r\n"
                            "CLASS:PRIVATE\r\n"
                            "PERCENT-COMPLETE:30\r\n"
                            "ATTENDEE;CN=Someone:mailto:someone@example.org\r\n"
                            "BEGIN:VALARM\r\n"
                            "ACTION:DISPLAY\r\n"
                            "DESCRIPTION:Reminder\r\n"
                            "TRIGGER;VALUE=DATE-TIME:20260330T063000Z\r\n"
                            "UID:alarm\r\n"
                            "END:VALARM\r\n"
                            "END:VTODO\r\n";

TEST_F(EvolutionWriting, ChangesOnlyWhatWasChangedInAReminder) {
    ForeignList other(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    other.add(richTask);
    house.awaitThat([&] { return reminder("rich") != nullptr; });
    const auto before = other.linesOf("rich");
    const EKReminderRef item = reminder("rich");
    ASSERT_TRUE(item);
    item->data.title = "new";
    item->data.isFlagged = true;
    ASSERT_TRUE(driver.save(item).has_value());

    const auto after = other.linesOf("rich");
    ASSERT_EQ(after.size(), 1U);
    EXPECT_THAT(without(before[0], after[0]), ElementsAre("SUMMARY;LANGUAGE=en:old"));
    EXPECT_THAT(without(after[0], before[0]), ElementsAre("SUMMARY;LANGUAGE=en:new", "X-PINNED:true"));
}

TEST_F(EvolutionWriting, TakesBackWhatItWroteAndKeepsWhatOthersWrote) {
    ForeignList other(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    other.add(richTask);
    house.awaitThat([&] { return reminder("rich") != nullptr; });
    const auto before = other.linesOf("rich");
    const EKReminderRef item = reminder("rich");
    item->data.title = "new";
    item->data.alarms.push_back(EKAlarm::at(paris({2026, 3, 30}, {8, 0})));
    const auto done = driver.save(item);
    ASSERT_TRUE(done.has_value());
    QByteArray changed = richTask;
    other.replace(changed.replace("SUMMARY;LANGUAGE=en:old", "SUMMARY;LANGUAGE=en:new")
                      .replace("GEO:48.85;2.35", "GEO:1;2")
                      .replace("END:VTODO", "BEGIN:VALARM\r\nACTION:DISPLAY\r\nDESCRIPTION:new\r\n"
                                            "TRIGGER;VALUE=DATE-TIME:20260330T060000Z\r\nEND:VALARM\r\n"
                                            "END:VTODO"));
    house.awaitThat([&] { return reminder("rich")->data.alarms.size() == 2; });
    ASSERT_TRUE(driver.revert(*done).has_value());
    const auto undone = other.linesOf("rich");
    EXPECT_EQ(undone[0].count("SUMMARY;LANGUAGE=en:old"), 1U);
    EXPECT_EQ(undone[0].count("BEGIN:VALARM"), before[0].count("BEGIN:VALARM"));
    const auto taken = without(before[0], undone[0]);
    ASSERT_EQ(taken.size(), 1U);
    EXPECT_TRUE(taken[0].startsWith("GEO")) << "what the others had changed";

    item->data = reminder("rich")->data;
    ASSERT_TRUE(item->refresh());
    item->data.notes = "notes";
    const auto noted = driver.save(item);
    ASSERT_TRUE(noted.has_value());
    // Marks that the service itself adds to alarms are no change by somebody else.
    other.replace(changed.replace("SUMMARY;", "DESCRIPTION:notes\r\nSUMMARY;").replace("GEO:1;2", "GEO:3;4"));
    const auto present = other.linesOf("rich");
    ASSERT_TRUE(driver.revert(*noted).has_value());
    EXPECT_THAT(without(present[0], other.linesOf("rich")[0]), ElementsAre("DESCRIPTION:notes"));
    EXPECT_THAT(without(other.linesOf("rich")[0], present[0]), IsEmpty());

    const auto removed = driver.remove(reminder("rich"));
    ASSERT_TRUE(removed.has_value());
    EXPECT_EQ(reminder("rich"), nullptr);
    ASSERT_TRUE(driver.revert(*removed).has_value());
    EXPECT_THAT(without(present[0], other.linesOf("rich")[0]), ElementsAre("DESCRIPTION:notes"));
}

TEST_F(EvolutionWriting, WritesManyWithOneCallAndLosesNothingOfAny) {
    ForeignList other(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    // More than are read one by one.
    constexpr int count = 60;
    const auto uidOf = [](int number) { return "rich" + QByteArray::number(number); };
    for (int number = 0; number < count; ++number)
        other.add(QByteArray(richTask).replace("UID:rich", "UID:" + uidOf(number)));
    house.awaitThat([&] { return driver.openTitles().size() == count; });
    const auto before = other.linesOf(uidOf(0));
    std::vector<EKReminderRef> items;
    for (int number = 0; number < count; ++number) {
        items.push_back(reminder(QString::fromLatin1(uidOf(number))));
        ASSERT_TRUE(items.back()) << number;
        items.back()->data.isFlagged = true;
    }
    // Nobody here has heard of this yet.
    other.replace(QByteArray(richTask).replace("UID:rich", "UID:" + uidOf(7)).replace("old", "theirs"));
    items[7]->data.title = "ours";

    const auto results = driver.saveAll(items);
    ASSERT_EQ(results.size(), items.size());
    for (int number = 0; number < count; ++number) {
        const auto after = other.linesOf(uidOf(number));
        ASSERT_EQ(after.size(), 1U);
        if (number == 7) {
            ASSERT_FALSE(results[7].has_value());
            EXPECT_EQ(results[7].error().code, EKError::Code::conflict);
            EXPECT_EQ(after[0].count("SUMMARY;LANGUAGE=en:theirs"), 1U);
            EXPECT_EQ(after[0].count("X-PINNED:true"), 0U);
            continue;
        }
        ASSERT_TRUE(results[std::size_t(number)].has_value()) << number;
        EXPECT_EQ(after[0].count("X-PINNED:true"), 1U) << number;
        EXPECT_EQ(after[0].size(), before[0].size() + 1) << number;
    }
    EXPECT_THAT(without(other.linesOf(uidOf(0))[0], before[0]), ElementsAre("X-PINNED:true"));
    EXPECT_THAT(without(before[0], other.linesOf(uidOf(0))[0]), IsEmpty());
}

TEST_F(EvolutionWriting, NoticesAChangeOfOthersThatItHasNotHeardOf) {
    ForeignList other(list, E_CAL_CLIENT_SOURCE_TYPE_TASKS);
    other.add(richTask);
    house.awaitThat([&] { return reminder("rich") != nullptr; });
    const EKReminderRef item = reminder("rich");
    QByteArray changed = richTask;
    other.replace(changed.replace("en:old", "en:theirs").replace("CLASS:PRIVATE", "PRIORITY:1"));
    item->data.title = "ours";
    const auto refused = driver.save(item);
    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error().code, EKError::Code::conflict);
    EXPECT_EQ(reminder("rich")->data.title, "theirs");

    item->reset();
    item->data.notes = "ours";
    ASSERT_TRUE(driver.save(item).has_value());
    EXPECT_EQ(item->data.title, "theirs");
    EXPECT_EQ(item->data.priority, 1);
    EXPECT_EQ(other.linesOf("rich")[0].count("DESCRIPTION:ours"), 1U);
}

const QByteArray series =
    "BEGIN:VEVENT\r\nUID:series\r\nDTSTAMP:20260101T000000Z\r\nCREATED:20250101T000000Z\r\n"
    "SUMMARY:Meeting\r\nDTSTART;TZID=Europe/Paris:20260327T090000\r\nDURATION:PT1H\r\n"
    "RRULE:FREQ=DAILY;COUNT=9\r\nX-KEPT:of the series\r\nEND:VEVENT\r\n";
const QByteArray changedDate =
    "BEGIN:VEVENT\r\nUID:series\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:Another\r\n"
    "RECURRENCE-ID;TZID=Europe/Paris:20260328T090000\r\nDTSTART;TZID=Europe/Paris:20260328T110000\r\n"
    "DURATION:PT2H\r\nX-KEPT:of the date\r\nEND:VEVENT\r\n";

TEST_F(EvolutionWriting, ChangesSingleDatesOfASeriesAndNothingElse) {
    ForeignList other(calendar, E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
    other.add(series);
    other.replace(changedDate);
    house.awaitThat([&] {
        return eventOn({2026, 3, 28}) && eventOn({2026, 3, 28})->data.title == "Another";
    });
    EXPECT_EQ(eventOn({2026, 3, 28})->data.startDate, paris({2026, 3, 28}, {11, 0}));
    const auto before = other.linesOf("series");
    ASSERT_EQ(before.size(), 2U);

    // A date that was not changed yet.
    EKEventRef event = eventOn({2026, 3, 29});
    ASSERT_TRUE(event);
    event->data.title = "Moved";
    event->data.startDate += 3h;
    event->data.endDate += 3h;
    ASSERT_TRUE(driver.save(event).has_value());
    auto after = other.linesOf("series");
    ASSERT_EQ(after.size(), 3U);
    for (const auto& component : before)
        EXPECT_EQ(std::count(after.begin(), after.end(), component), 1);
    EXPECT_EQ(eventOn({2026, 3, 29})->data.title, "Moved");

    // One that was.
    event = eventOn({2026, 3, 28});
    event->data.notes = "ours";
    ASSERT_TRUE(driver.save(event).has_value());
    after = other.linesOf("series");
    ASSERT_EQ(after.size(), 3U);
    EXPECT_EQ(std::count_if(after.begin(), after.end(),
                            [](const auto& lines) {
                                return lines.count("X-KEPT:of the date") && lines.count("DESCRIPTION:ours");
                            }),
              1);

    // An excluded date as other programs write it, with the zone of the series.
    for (const int day : {28, 30}) {
        ASSERT_TRUE(driver.remove(eventOn({2026, 3, day})).has_value());
        EXPECT_EQ(eventOn({2026, 3, day}), nullptr);
    }
    after = other.linesOf("series");
    ASSERT_EQ(after.size(), 2U);
    const auto whole = std::find_if(after.begin(), after.end(),
                                    [](const auto& lines) { return lines.count("X-KEPT:of the series"); });
    ASSERT_NE(whole, after.end());
    std::vector<QByteArray> excluded;
    std::copy_if(whole->begin(), whole->end(), std::back_inserter(excluded),
                 [](const QByteArray& line) { return line.startsWith("EXDATE"); });
    EXPECT_THAT(excluded, UnorderedElementsAre("EXDATE;TZID=Europe/Paris:20260328T090000",
                                               "EXDATE;TZID=Europe/Paris:20260330T090000"));
    EXPECT_EQ(driver.events(paris({2026, 3, 1}), paris({2026, 5, 1})).size(), 7U);
}

TEST_F(EvolutionWriting, ReadsTimesInZonesThatOnlyTheServiceKnows) {
    ForeignList other(calendar, E_CAL_CLIENT_SOURCE_TYPE_EVENTS);
    other.addZone("BEGIN:VTIMEZONE\r\nTZID:Office\r\nBEGIN:STANDARD\r\nDTSTART:19700101T000000\r\n"
                  "TZOFFSETFROM:+0530\r\nTZOFFSETTO:+0530\r\nEND:STANDARD\r\nEND:VTIMEZONE\r\n");
    other.add("BEGIN:VEVENT\r\nUID:odd\r\nDTSTAMP:20260101T000000Z\r\nSUMMARY:x\r\n"
              "DTSTART;TZID=Office:20260327T090000\r\nEND:VEVENT\r\n");
    house.awaitThat([&] { return house.store.event("odd") != nullptr; });
    EXPECT_EQ(house.store.event("odd")->data.startDate, at("UTC", {2026, 3, 27}, {3, 30}));
}

}  // namespace
}  // namespace kestrant
