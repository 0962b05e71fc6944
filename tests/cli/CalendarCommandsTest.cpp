#include "CommandLineFixture.h"

#include <QDir>
#include <QFile>

namespace kestrant {
namespace {

/// The calendars "home" and "office" and the list "tasks".
class CalendarCommandsTest : public CommandLineFixture {
  protected:
    CalendarCommandsTest() {
        putEvent(
            "office", "lunch",
            "SUMMARY:Lunch\r\nDTSTART;TZID=Europe/Paris:20260327T113000\r\n"
            "DTEND;TZID=Europe/Paris:20260327T130000\r\nLOCATION:Canteen\r\nDESCRIPTION:With\\nTheo\r\n");
        putEvent("office", "standup",
                 "SUMMARY:Stand-up\r\nDTSTART;TZID=Europe/Paris:20260323T093000\r\nDURATION:PT15M\r\n"
                 "RRULE:FREQ=DAILY;COUNT=8\r\n");
        putEvent("home", "night",
                 "SUMMARY:Night train\r\nDTSTART:20260328T220000Z\r\nDTEND:20260330T043000Z\r\n");
        putEvent("home", "trip",
                 "SUMMARY:Trip\r\nDTSTART;VALUE=DATE:20260326\r\nDTEND;VALUE=DATE:20260329\r\n");
        putEvent("home", "past", "SUMMARY:Past\r\nDTSTART:20250401T100000Z\r\nDTEND:20250401T110000Z\r\n");
        putEvent("home", "older", "SUMMARY:Older\r\nDTSTART:20250301T100000Z\r\nDTEND:20250301T110000Z\r\n");
        putTodo("tasks", "milk", "SUMMARY:Buy milk\r\nDUE;TZID=Europe/Paris:20260327T143000\r\n");
        putTodo("tasks", "taxes", "SUMMARY:Taxes\r\nDUE;VALUE=DATE:20260326\r\n");
        put("store/office/displayname", "Office");
    }

    /// Every row of the two years, by title.
    [[nodiscard]] QMultiMap<QString, QJsonObject> rows() const {
        QMultiMap<QString, QJsonObject> result;
        for (const QJsonValue day : run({"agenda", "--all", "--json"}).json().array()) {
            for (const QJsonValue row : day[QLatin1String("events")].toArray())
                result.insert(row[QLatin1String("title")].toString(), row.toObject());
        }
        return result;
    }
    [[nodiscard]] QStringList starts(const QString& title) const {
        QStringList result;
        for (const QJsonObject& row : rows().values(title))
            result.prepend(row["startDate"].toString());
        return result;
    }
};

TEST_F(CalendarCommandsTest, AgendaPrintsTheWeekAsJson) {
    for (const char* file : {"home/trip", "home/night"})
        ASSERT_TRUE(QFile::remove(path(QStringLiteral("store/%1.ics").arg(QLatin1String(file)))));
    putEvent("office", "standup",
             "SUMMARY:\r\nDTSTART;TZID=Europe/Paris:20260322T093000\r\nDURATION:PT15M\r\n"
             "RRULE:FREQ=WEEKLY\r\n");
    const Result result = run({"agenda", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.json(), QJsonDocument::fromJson(R"([
        {"date": "2026-03-26T23:00:00Z", "headerTitle": "TODAY · FRI 27", "isToday": true, "events": [
            {"id": "lunch_1774607400.0", "itemIdentifier": "lunch", "title": "Lunch",
             "startDate": "2026-03-27T10:30:00Z", "endDate": "2026-03-27T12:00:00Z", "isAllDay": false,
             "calendarTitle": "Office", "location": "Canteen", "notes": "With\nTheo", "isHappeningNow": true,
             "isReminder": false},
            {"id": "reminder_milk", "itemIdentifier": "milk", "title": "Buy milk",
             "startDate": "2026-03-27T13:30:00Z", "endDate": "2026-03-27T14:00:00Z", "isAllDay": false,
             "calendarTitle": "tasks", "location": null, "notes": null, "isHappeningNow": false,
             "isReminder": true}]},
        {"date": "2026-03-28T23:00:00Z", "headerTitle": "SUN 29", "isToday": false, "events": [
            {"id": "standup_1774769400.0", "itemIdentifier": "standup", "title": "Untitled Event",
             "startDate": "2026-03-29T07:30:00Z", "endDate": "2026-03-29T07:45:00Z", "isAllDay": false,
             "calendarTitle": "Office", "location": null, "notes": null, "isHappeningNow": false,
             "isReminder": false}]}])"))
        << result.out.toStdString();
    EXPECT_FALSE(QFile::exists(path("ledger.json"))) << "reading leaves no trace";
}

TEST_F(CalendarCommandsTest, AgendaPrintsDaysInThePersonsLanguage) {
    putEvent("office", "lunch",
             "SUMMARY:Lunch\\nat\x1B[2J noon\r\nDTSTART;TZID=Europe/Paris:20260327T113000\r\n"
             "DTEND;TZID=Europe/Paris:20260327T130000\r\nLOCATION:Room\\n4\r\n");
    EXPECT_EQ(run({"agenda"}).out.toStdString(),
              "TODAY · FRI 27\n"
              "  All day         Trip                       home    trip_1774479600.0\n"
              "  11:30–13:00  ▸  Lunch at␛[2J noon  Room 4  Office  lunch_1774607400.0\n"
              "  14:30        ○  Buy milk                   tasks   reminder_milk\n"
              "\n"
              "TOMORROW · SAT 28\n"
              "  All day         Trip                       home    trip_1774479600.0\n"
              "  09:30–09:45     Stand-up                   Office  standup_1774686600.0\n"
              "  23:00–…         Night train                home    night_1774735200.0\n"
              "\n"
              "SUN 29\n"
              "  …               Night train                home    night_1774735200.0\n"
              "  09:30–09:45     Stand-up                   Office  standup_1774769400.0\n"
              "\n"
              "MON 30\n"
              "  …–06:30         Night train                home    night_1774735200.0\n"
              "  09:30–09:45     Stand-up                   Office  standup_1774855800.0\n");
    put("preferences.json", R"({"kestrantLanguage": "fr"})");
    const QString french = run({"agenda", "--no-reminders"}).out;
    EXPECT_TRUE(french.startsWith("AUJOURD’HUI · VEN. 27\n  Journée         Trip ")) << french.toStdString();
    EXPECT_EQ(run({"agenda", "--now", "2030-01-01T00:00:00Z"}).out, "Aucun événement à venir.\n");
}

TEST_F(CalendarCommandsTest, AgendaTakesThePreferenceForRemindersUnlessToldOtherwise) {
    const auto showsReminders = [this](const QStringList& options) {
        return run(QStringList{"agenda"} + options).out.contains("reminder_milk");
    };
    EXPECT_TRUE(showsReminders({}));
    EXPECT_FALSE(showsReminders({"--no-reminders"}));
    const QByteArray preferences = R"({"showRemindersInCalendar": false})";
    put("preferences.json", preferences);
    EXPECT_FALSE(showsReminders({}));
    EXPECT_TRUE(showsReminders({"--reminders"}));
    EXPECT_EQ(file("preferences.json"), QString::fromUtf8(preferences));
}

TEST_F(CalendarCommandsTest, AgendaOfAllDaysReachesAYearEachWayAndShowsWhatIsOver) {
    putEvent("home", "next", "SUMMARY:Next\r\nDTSTART:20270326T100000Z\r\nDTEND:20270326T110000Z\r\n");
    putEvent("home", "later", "SUMMARY:Later\r\nDTSTART:20270327T100000Z\r\nDTEND:20270327T110000Z\r\n");
    EXPECT_EQ(rows().uniqueKeys(),
              (QStringList{"Buy milk", "Lunch", "Next", "Night train", "Past", "Stand-up", "Taxes", "Trip"}));
    EXPECT_EQ(rows().count("Stand-up"), 8);
    EXPECT_EQ(run({"agenda", "--json"}).json().array().size(), 4);
    EXPECT_TRUE(run({"agenda", "--all"}).out.startsWith("TUE 1 · April 2025\n  12:00–13:00     Past "));
}

struct NewEventCase {
    QStringList options;
    const char* start;
    const char* end;
};

TEST_F(CalendarCommandsTest, AddEventWritesTheTimesThatWereAskedForAndPrintsTheRow) {
    const NewEventCase cases[] = {
        {{"--start", "2026-04-02T09:15", "--end", "2026-04-02 11:00"},
         "2026-04-02T07:15:00Z",
         "2026-04-02T09:00:00Z"},
        {{"--start", "2026-04-02T09:15:00-05:00"}, "2026-04-02T14:15:00Z", "2026-04-02T14:45:00Z"},
        // The clocks skip the hour from two to three.
        {{"--start", "2026-03-29T02:30", "--end", "2026-03-29T03:30"},
         "2026-03-29T01:30:00Z",
         "2026-03-29T02:00:00Z"},
        {{"--start", "2026-03-29T02:45", "--end", "2026-03-29T03:15"},
         "2026-03-29T01:45:00Z",
         "2026-03-29T02:15:00Z"},
        {{"--start", "2026-04-02T09:15Z", "--end", "2026-04-02T11:25"},
         "2026-04-02T09:15:00Z",
         "2026-04-02T09:45:00Z"},
        {{"--start", "2026-03-29T02:30", "--end", "2026-03-29T04:00"},
         "2026-03-29T01:30:00Z",
         "2026-03-29T02:00:00Z"},
        {{"--all-day", "--start", "2026-03-29"}, "2026-03-28T23:00:00Z", "2026-03-29T22:00:00Z"},
        {{"--all-day", "--start", "2026-03-28", "--end", "2026-03-30"},
         "2026-03-27T23:00:00Z",
         "2026-03-30T22:00:00Z"},
    };
    for (const NewEventCase& testCase : cases) {
        const Result added = run(QStringList{"add-event", " Zoé’s visit "} + testCase.options);
        EXPECT_EQ(added.status, 0) << added.err.toStdString();
        const auto events = rows().values("Zoé’s visit");
        ASSERT_FALSE(events.isEmpty()) << testCase.start;
        const QJsonObject event = events.first();
        EXPECT_EQ(event["startDate"], testCase.start);
        EXPECT_EQ(event["endDate"], testCase.end);
        EXPECT_EQ(event["isAllDay"].toBool(), testCase.options.contains("--all-day"));
        EXPECT_EQ(event["calendarTitle"], "home") << "the default calendar";
        EXPECT_EQ(event["id"], added.out.trimmed());
        EXPECT_EQ(run({"delete-event", added.out.trimmed()}).status, 0);
    }
    const QJsonObject added =
        run({"add-event", "Review", "--start", "2026-04-02T09:15", "--calendar", "office", "--json"})
            .json()
            .object();
    EXPECT_EQ(rows().value("Review")["calendarTitle"], "Office");
    EXPECT_EQ(rows().value("Review")["id"], added["id"]);
}

TEST_F(CalendarCommandsTest, AddEventUnderstandsALine) {
    struct Case {
        const char* line;
        const char* understood;
    };
    const Case cases[] = {
        {"Dinner with Maren friday 7pm-9pm at Cafe Luz, 30 min before", "Title     Dinner with Maren\n"
                                                                        "Start     Fri 3 Apr 19:00\n"
                                                                        "End       Fri 3 Apr 21:00\n"
                                                                        "Alert     30 min before\n"
                                                                        "Location  Cafe Luz\n"},
        {"vacances du 12 au 15 juin", "Title     vacances\nStart     Fri 12 Jun\nLast day  Mon 15 Jun\n"},
        {"Gym every monday 6-7am #Office // shoes", "Title     Gym\n"
                                                    "Start     Mon 30 Mar 06:00\n"
                                                    "End       Mon 30 Mar 07:00\n"
                                                    "Repeats   every Mon\n"
                                                    "Calendar  Office\n"
                                                    "Notes     shoes\n"},
    };
    for (const Case& each : cases) {
        const Result added = run({"add-event", QString::fromUtf8(each.line)});
        EXPECT_EQ(added.status, 0) << added.err.toStdString();
        EXPECT_EQ(added.err.toStdString(), each.understood);
    }
    input = {QStringLiteral("Lunch tomorrow noon"), QStringLiteral("no date"),
             QStringLiteral("Tea sunday 4pm")};
    const Result added = run({"add-event", "-"});
    EXPECT_EQ(added.status, 1);
    EXPECT_EQ(added.out.count(u'\n'), 2);
}

TEST_F(CalendarCommandsTest, AddEventMakesTheFolderAndTheFirstCalendarOfANewStore) {
    const QString store = "vdir:" + path("new/store");
    EXPECT_EQ(run({"agenda", "--store", store}).status, 1);
    EXPECT_FALSE(QFile::exists(path("new")));
    EXPECT_EQ(run({"add-event", "First", "--start", "2026-03-28T10:00", "--store", store}).status, 0);
    EXPECT_EQ(run({"agenda", "--json", "--store", store}).json().array().size(), 2);
}

TEST_F(CalendarCommandsTest, DeleteEventTakesAwayTheOneOccurrence) {
    const Result deleted = run({"delete-event", "standup_1774769400.0"});
    EXPECT_EQ(deleted.status, 0) << deleted.err.toStdString();
    EXPECT_EQ(deleted.out, "");
    const QStringList starts = this->starts("Stand-up");
    EXPECT_EQ(starts.size(), 7);
    EXPECT_FALSE(starts.contains("2026-03-29T07:30:00Z"));
    EXPECT_TRUE(file("store/office/standup.ics").contains("RRULE:FREQ=DAILY;COUNT=8\r\n"));
    EXPECT_TRUE(file("store/office/standup.ics").contains("EXDATE;TZID=Europe/Paris:20260329T093000\r\n"));

    EXPECT_EQ(run({"delete-event", "trip_1774479600.0", "--json"}).json().object(),
              (QJsonObject{{"id", "trip_1774479600.0"}}));
    EXPECT_FALSE(QFile::exists(path("store/home/trip.ics")));
}

TEST_F(CalendarCommandsTest, CalendarsPrintsThoseOfEventsAlone) {
    put("store/office/color", "#ff8800");
    EXPECT_EQ(run({"calendars"}).out, "home    home\n"
                                      "Office  office\n");
    EXPECT_EQ(run({"calendars", "--json"}).json().array()[1].toObject(),
              (QJsonObject{{"id", "office"},
                           {"title", "Office"},
                           {"color", "#FF8800"},
                           {"allowsContentModifications", true}}));
    EXPECT_EQ(run({"lists"}).out, "tasks  tasks\n");
}

struct RefusalCase {
    QStringList arguments;
    int status;
    const char* message;
};

TEST_F(CalendarCommandsTest, WhatIsRefusedIsExplainedAndChangesNothing) {
    const char* const gone = "This event is no longer available.\n";
    const char* const reversed = "The end must be after the start.\n";
    const RefusalCase cases[] = {
        {{"delete-event", "nobody_1774769400.0"}, 1, gone},
        {{"delete-event", "standup_1774769401.0"}, 1, gone},
        {{"delete-event", "standup_1774769400"}, 1, gone},
        {{"delete-event", "standup"}, 1, gone},
        {{"delete-event", "standup_1e300"}, 1, gone},
        {{"delete-event", "standup_nan"}, 1, gone},
        {{"delete-event", ""}, 1, gone},
        {{"delete-event", "reminder_milk"},
         1,
         "This row is a reminder; delete it with kestrant delete milk.\n"},
        {{"add-event", " \t ", "--start", "2026-03-28T10:00"}, 1, "Event title cannot be empty.\n"},
        {{"add-event", "x", "--start", "2026-03-28T10:00", "--calendar", "nowhere"},
         1,
         "This calendar is no longer available.\n"},
        {{"add-event", "x", "--start", "2026-03-28T10:00", "--calendar", "tasks"},
         1,
         "This calendar is no longer available.\n"},
        {{"add-event", "x", "--start", "2026-03-28T10:00", "--end", "2026-03-28T10:00"}, 1, reversed},
        {{"add-event", "x", "--start", "2026-10-25T02:15+01:00", "--end", "2026-10-25T02:45+02:00"},
         1,
         reversed},
        {{"add-event", "x", "--all-day", "--start", "2026-03-28", "--end", "2026-03-27"}, 1, reversed},
        {{"agenda", "--store", "vdir:/no/such"}, 1, "There is no folder /no/such.\n"},
        {{"add-event", "x"}, 1, "“x” does not say when; write a day or a time in it, or --start.\n"},
    };
    const auto files = [this] {
        QStringList result;
        for (const char* folder : {"home", "office", "tasks"}) {
            const QString here = QStringLiteral("store/%1/").arg(QLatin1String(folder));
            for (const QString& name : QDir(path(here)).entryList(QDir::Files))
                result += name + file(here + name);
        }
        return result;
    };
    const QStringList before = files();
    for (const RefusalCase& testCase : cases) {
        const Result result = run(testCase.arguments);
        EXPECT_EQ(result.status, testCase.status) << testCase.arguments.join(u' ').toStdString();
        EXPECT_EQ(result.err, QString::fromUtf8(testCase.message));
        EXPECT_EQ(result.out, "");
    }
    EXPECT_EQ(files(), before);
}

TEST_F(CalendarCommandsTest, ATimeWhoseYearsCannotBeTakenEndsWithAnEmptyAgenda) {
    const Result result = run({"agenda", "--all", "--now", "9999-06-01T00:00:00Z"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "No upcoming events.\n");
}

TEST_F(CalendarCommandsTest, ADamagedFileIsNamedAndHidesNothingElse) {
    put("store/home/broken.ics", "BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nSUMMARY:cut");
    const Result result = run({"agenda", "--json"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.json().array().size(), 4);
    EXPECT_TRUE(result.err.contains("broken.ics")) << result.err.toStdString();
    EXPECT_EQ(result.err.count(u'\n'), 1);
}

}  // namespace
}  // namespace kestrant
