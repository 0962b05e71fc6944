#include "eventkit/icalendar/Todo.h"
#include "support/ReminderBuilders.h"

#include <gmock/gmock.h>

namespace kestrant::icalendar {
namespace {

using ::testing::IsEmpty;

const TimeZone paris{*TimeZone::named("Europe/Paris")};

QByteArray fileWith(const QByteArray& components) {
    return "BEGIN:VCALENDAR\nVERSION:2.0\n" + components + "END:VCALENDAR\n";
}

QByteArray todo(const QByteArray& lines) {
    return "BEGIN:VTODO\nUID:1\n" + lines + "END:VTODO\n";
}

std::vector<TodoItem> itemsOf(const QByteArray& components) {
    const auto document = Document::parse(fileWith(components));
    EXPECT_TRUE(document.has_value());
    return readTodos(*document, paris);
}

EKReminderData dataOf(const QByteArray& lines) {
    const auto items = itemsOf(todo(lines));
    EXPECT_EQ(items.size(), 1U);
    return items.at(0).data;
}

DateComponents inParis(QDate day, QTime time) {
    return DateComponents::fromDateTime(day, time, TimeZone::named("Europe/Paris"));
}

TEST(TodoReadingTest, ReadsAnEmptyReminderAsEmpty) {
    EXPECT_EQ(dataOf(""), EKReminderData{});
    EXPECT_EQ(
        dataOf("DESCRIPTION:\nLOCATION:\nURL:\nPRIORITY:\nDUE:\nSTATUS:\nPERCENT-COMPLETE:\nCOMPLETED:\n"),
        EKReminderData{});
}

TEST(TodoReadingTest, ReadsTheDueDateInEveryShape) {
    const DateComponents morning = inParis({2026, 3, 29}, {9, 0});
    EXPECT_EQ(dataOf("DTSTART;TZID=Europe/Paris:20260328T090000\nDURATION:P1D\n").dueDateComponents, morning);
    EXPECT_EQ(dataOf("DTSTART;TZID=Europe/Paris:20260328T090000\nDURATION:PT24H\n").dueDateComponents,
              inParis({2026, 3, 29}, {10, 0}));
    EXPECT_EQ(dataOf("DTSTART;VALUE=DATE:20260328\nDURATION:P1D\n").dueDateComponents,
              DateComponents::fromDate({2026, 3, 29}));
    EXPECT_EQ(dataOf("DTSTART:20260328T090000Z\nDURATION:nonsense\n").dueDateComponents, std::nullopt);
    EXPECT_EQ(dataOf("DURATION:P1D\n").dueDateComponents, std::nullopt);
}

TEST(TodoReadingTest, TakesAnyMarkOfCompletionForOne) {
    const Instant noon = at("UTC", {2026, 3, 27}, {12, 0});
    struct Case {
        const char* lines;
        bool isCompleted;
        std::optional<Instant> date;
    };
    const Case cases[] = {
        {"STATUS:NEEDS-ACTION\nPERCENT-COMPLETE:99\n", false, {}},
        {"STATUS:IN-PROCESS\n", false, {}},
        {"STATUS:completed\n", true, {}},
        {"COMPLETED:20260327T120000Z\n", true, noon},
        {"COMPLETED;TZID=Europe/Paris:20260327T130000\n", true, noon},
        {"COMPLETED;VALUE=DATE:20260327\n", true, at("Europe/Paris", {2026, 3, 27})},
        {"PERCENT-COMPLETE:100\n", true, {}},
        {"STATUS:NEEDS-ACTION\nCOMPLETED:20260327T120000Z\n", true, noon},
        {"STATUS:CANCELLED\n", true, {}},
    };
    for (const Case& each : cases) {
        const EKReminderData data = dataOf(each.lines);
        EXPECT_EQ(data.isCompleted, each.isCompleted) << each.lines;
        EXPECT_EQ(data.completionDate, each.date) << each.lines;
    }
}

TEST(TodoReadingTest, ReadsNumbersAndDatesForWhatTheyAreWorth) {
    EXPECT_EQ(dataOf("PRIORITY:9\n").priority, 9);
    for (const char* lines : {"PRIORITY:10\n", "PRIORITY:-1\n", "PRIORITY:high\n"})
        EXPECT_EQ(dataOf(lines).priority, 0);
    EXPECT_EQ(dataOf("DTSTAMP:20260101T000000Z\n").creationDate, at("UTC", {2026, 1, 1}));
    EXPECT_EQ(dataOf("DTSTAMP:20260101T000000Z\nCREATED:20250101T000000Z\n").creationDate,
              at("UTC", {2025, 1, 1}));
    EXPECT_EQ(dataOf("SUMMARY:first\nSUMMARY:second\n").title, "first");
}

TEST(TodoReadingTest, ReadsAlarmsForWhatTheyAreBoundTo) {
    const auto alarm = [](const QByteArray& lines, const QByteArray& dates = "DUE:20260327T120000Z\n",
                          const QByteArray& action = "DISPLAY") {
        return dataOf(dates + "BEGIN:VALARM\nACTION:" + action + '\n' + lines + "END:VALARM\n").alarms.at(0);
    };
    EXPECT_EQ(alarm("TRIGGER;VALUE=DATE-TIME:20260327T114500Z\n").absoluteDate,
              at("UTC", {2026, 3, 27}, {11, 45}));
    EXPECT_EQ(alarm("TRIGGER:20260327T114500Z\n").absoluteDate, at("UTC", {2026, 3, 27}, {11, 45}));
    const struct {
        QByteArray trigger;
        QByteArray dates;
        Instant rings;
    } relative[] = {
        {"TRIGGER:-PT15M\n", "DUE:20260327T120000Z\n", at("UTC", {2026, 3, 27}, {11, 45})},
        {"TRIGGER;RELATED=END:-P1D\n", "DUE:20260327T120000Z\n", at("UTC", {2026, 3, 26}, {12, 0})},
        {"TRIGGER:-PT15M\n", "DTSTART:20260327T110000Z\nDUE:20260327T120000Z\n",
         at("UTC", {2026, 3, 27}, {10, 45})},
        {"TRIGGER;RELATED=end:PT0S\n", "DTSTART:20260327T110000Z\nDURATION:PT90M\n",
         at("UTC", {2026, 3, 27}, {12, 30})},
        {"TRIGGER;RELATED=END:-PT5M\n", "DTSTART:20260327T110000Z\n", at("UTC", {2026, 3, 27}, {10, 55})},
        {"TRIGGER:-PT15H\n", "DUE;VALUE=DATE:20260328\n", at("Europe/Paris", {2026, 3, 27}, {9, 0})},
        {"TRIGGER;RELATED=END:-P1D\n", "DUE;TZID=Europe/Paris:20260329T090000\n",
         at("Europe/Paris", {2026, 3, 28}, {9, 0})},
        {"TRIGGER:-PT15M\n", "DUE:20260327T120000Z\nRRULE:FREQ=DAILY\nEXDATE:20260327T120000Z\n",
         at("UTC", {2026, 3, 28}, {11, 45})},
    };
    for (const auto& each : relative)
        EXPECT_EQ(alarm(each.trigger, each.dates).absoluteDate, each.rings)
            << (each.trigger + each.dates).constData();
    for (const char* action : {"AUDIO", "EMAIL", "PROCEDURE", "NONE"})
        EXPECT_EQ(alarm("TRIGGER:-PT15M\n", "DUE:20260327T120000Z\n", action).absoluteDate, std::nullopt)
            << action;

    const EKAlarm place =
        alarm("TRIGGER;VALUE=DATE-TIME:19760401T005545Z\nX-APPLE-PROXIMITY:DEPART\n"
              "X-APPLE-STRUCTURED-LOCATION;VALUE=URI;X-APPLE-RADIUS=100;X-TITLE=\"Work; 2nd floor\":\n"
              " geo:48.85,2.35\n");
    EXPECT_EQ(place.absoluteDate, std::nullopt);
    EXPECT_EQ(place.relativeOffset, std::nullopt);
    EXPECT_EQ(place.proximity, EKAlarmProximity::leave);
    EXPECT_EQ(place.structuredLocation, (EKStructuredLocation{"Work; 2nd floor", 48.85, 2.35, 100}));

    const EKAlarm standard =
        alarm("TRIGGER:PT0S\nPROXIMITY:ARRIVE\nBEGIN:VLOCATION\nNAME:Home\nURL:geo:40.5,-79.9;u=10\n"
              "END:VLOCATION\n");
    EXPECT_EQ(standard.relativeOffset, std::nullopt);
    EXPECT_EQ(standard.proximity, EKAlarmProximity::enter);
    EXPECT_EQ(standard.structuredLocation, (EKStructuredLocation{"Home", 40.5, -79.9, 10}));

    EXPECT_EQ(alarm("TRIGGER;VALUE=DATE-TIME:19760401T005545Z\n").absoluteDate, std::nullopt);
    EXPECT_TRUE(alarm("TRIGGER:20260327T114500\nX-APPLE-PROXIMITY:ARRIVE\n").structuredLocation.has_value());
}

TEST(TodoReadingTest, ShowsTheDateOfASeriesThatIsDueNow) {
    struct Case {
        const char* what;
        QByteArray components;
        std::optional<DateComponents> due;
        bool isCompleted;
    };
    const QByteArray master = "DUE;TZID=Europe/Paris:20260327T090000\nRRULE:FREQ=DAILY;COUNT=3\n";
    const auto done = [](const QByteArray& id) {
        return "BEGIN:VTODO\nUID:1\n" + id + "\nSTATUS:COMPLETED\nCOMPLETED:20260327T100000Z\nEND:VTODO\n";
    };
    const DateComponents first = inParis({2026, 3, 27}, {9, 0});
    const DateComponents second = inParis({2026, 3, 28}, {9, 0});
    const Case cases[] = {
        {"an untouched series", todo(master), first, false},
        {"a first date that was done by itself",
         todo(master) + done("RECURRENCE-ID;TZID=Europe/Paris:20260327T090000"), second, false},
        {"the same, written in UTC", todo(master) + done("RECURRENCE-ID:20260327T080000Z"), second, false},
        {"the part before the series", done("RECURRENCE-ID:20260327T080000Z") + todo(master), second, false},
        {"a later date that was done", todo(master) + done("RECURRENCE-ID:20260328T080000Z"), first, false},
        {"all of them done",
         todo(master) + done("RECURRENCE-ID:20260327T080000Z") + done("RECURRENCE-ID:20260328T080000Z") +
             done("RECURRENCE-ID:20260329T070000Z"),
         first, true},
        {"a first date that was left out", todo(master + "EXDATE;TZID=Europe/Paris:20260327T090000\n"),
         second, false},
        {"one left out by its day", todo(master + "EXDATE;VALUE=DATE:20260327\n"), second, false},
        {"the mark of the present date", todo(master + "X-KDE-LIBKCAL-DTRECURRENCE:20260328T080000Z\n"),
         second, false},
        {"a mark on a finished series",
         todo(master + "STATUS:COMPLETED\nX-KDE-LIBKCAL-DTRECURRENCE:20260328T080000Z\n"), first, true},
        {"a series of extra dates",
         todo("DUE;TZID=Europe/Paris:20260327T090000\nRDATE;TZID=Europe/Paris:20260328T090000\n"
              "EXDATE:20260327T080000Z\n"),
         second, false},
    };
    for (const Case& each : cases) {
        const auto items = itemsOf(each.components);
        ASSERT_EQ(items.size(), 1U) << each.what;
        EXPECT_EQ(items[0].data.dueDateComponents, each.due) << each.what;
        EXPECT_EQ(items[0].data.isCompleted, each.isCompleted) << each.what;
    }
}

TEST(TodoReadingTest, TellsTheRemindersOfAFileApart) {
    const auto items =
        itemsOf("BEGIN:VTODO\nUID:a\nEND:VTODO\n"
                "BEGIN:VTODO\nUID:b\nRECURRENCE-ID:20260327T080000Z\nSTATUS:COMPLETED\nEND:VTODO\n"
                "BEGIN:VTODO\nSUMMARY:no identifier\nEND:VTODO\n"
                "BEGIN:VEVENT\nUID:c\nEND:VEVENT\n"
                "BEGIN:VTODO\nUID:a\nEND:VTODO\n");
    ASSERT_EQ(items.size(), 4U);
    EXPECT_EQ(items[0].key, "a");
    EXPECT_EQ(items[1].key, "b/20260327T080000Z");
    EXPECT_TRUE(items[1].data.isCompleted);
    EXPECT_EQ(items[2].key, "");
    EXPECT_EQ(items[3].key, "a");
    EXPECT_EQ(items[3].index, 3);
}

TEST(TodoReadingTest, SurvivesRulesThatNeverEndOrMakeNoSense) {
    for (const char* rule :
         {"RRULE:FREQ=SECONDLY;BYMONTH=2;BYMONTHDAY=30\n", "RRULE:COUNT=-1;FREQ=DAILY\n", "RRULE:\n"}) {
        const EKReminderData data =
            dataOf(QByteArray("DUE:20260327T090000Z\nEXDATE:20260327T090000Z\n") + rule);
        EXPECT_EQ(data.recurrenceRules.size(), 1U);
    }
    const EKReminderData invalid = dataOf("DUE:20260327T090000Z\nRRULE:COUNT=-1;FREQ=DAILY\n");
    EXPECT_FALSE(invalid.isCompleted);
    EXPECT_EQ(invalid.recurrenceRules[0].frequency, EKRecurrenceFrequency::other);
}

}  // namespace
}  // namespace kestrant::icalendar
