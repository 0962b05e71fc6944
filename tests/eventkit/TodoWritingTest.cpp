#include "eventkit/icalendar/TimeZoneText.h"
#include "eventkit/icalendar/Todo.h"
#include "support/ReminderBuilders.h"

#include <QByteArrayList>

#include <gmock/gmock.h>

namespace kestrant::icalendar {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});

/// What an edit does to the lines of a file: those taken away with "-", new ones with "+", in their order,
/// without the marks of a revision.
struct Edit {
    QByteArrayList changes;
    EKReminderData readBack;
};

template <typename Change>
Edit edit(const QByteArray& lines, Change change) {
    const QByteArray text = "BEGIN:VCALENDAR\nBEGIN:VTODO\nUID:1\nCREATED:20260101T000000Z\nX-KEEP;P=1:me\n" +
                            lines + "END:VTODO\nEND:VCALENDAR\n";
    Document document = *Document::parse(text);
    const TodoItem item = readTodos(document, paris).at(0);
    EKReminderData after = item.data;
    change(after);
    Component component(document.components("VTODO")[0].lines());
    writeTodo(component, item, after, document, paris, now);
    document.replace(0, component);

    Edit result;
    QByteArrayList before = text.split('\n');
    for (const QByteArray& line : document.text().split('\n')) {
        const bool isMark =
            line.startsWith("LAST-MODIFIED") || line.startsWith("DTSTAMP") || line.startsWith("SEQUENCE");
        if (before.removeOne(line) || isMark)
            continue;
        result.changes.append('+' + line);
    }
    for (const QByteArray& line : before)
        result.changes.append('-' + line);
    result.readBack = readTodos(document, paris).at(0).data;
    after.lastModifiedDate = now;
    for (std::size_t i = 0; i < after.alarms.size(); ++i)
        after.alarms[i].sourceText = result.readBack.alarms.at(i).sourceText;
    EXPECT_EQ(result.readBack, after) << "what was written does not read back";
    return result;
}

TEST(TodoWritingTest, ChangesOnlyTheLinesOfWhatChanged) {
    const QByteArray lines = "SUMMARY;LANGUAGE=en:old\nDESCRIPTION;ALTREP=\"cid:1\":text\nPRIORITY:5\n"
                             "DUE;TZID=Europe/Paris;X-A=b:20260327T090000\n";
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.title = "new, and"; }).changes,
                ElementsAre("+SUMMARY;LANGUAGE=en:new\\, and", "-SUMMARY;LANGUAGE=en:old"));
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.notes = "a\nb"; }).changes,
                ElementsAre("+DESCRIPTION:a\\nb", "-DESCRIPTION;ALTREP=\"cid:1\":text"));
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.notes.reset(); }).changes,
                ElementsAre("-DESCRIPTION;ALTREP=\"cid:1\":text"));
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.priority = 0; }).changes,
                ElementsAre("-PRIORITY:5"));
    EXPECT_THAT(
        edit(lines,
             [](EKReminderData& data) {
                 data.dueDateComponents = DateComponents::fromDate({2026, 4, 1});
             })
            .changes,
        ElementsAre("+DUE;X-A=b;VALUE=DATE:20260401", "-DUE;TZID=Europe/Paris;X-A=b:20260327T090000"));
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.location = "Here"; }).changes,
                ElementsAre("+LOCATION:Here"));
    EXPECT_THAT(edit(lines, [](EKReminderData& data) { data.url = "https://example.org/a,b"; }).changes,
                ElementsAre("+URL:https://example.org/a,b"));
}

TEST(TodoWritingTest, SetsAndClearsTheMarksOfCompletionTogether) {
    const auto complete = [](EKReminderData& data) {
        data.isCompleted = true;
        data.completionDate = now;
    };
    EXPECT_THAT(edit("STATUS:NEEDS-ACTION\n", complete).changes,
                ElementsAre("+STATUS:COMPLETED", "+COMPLETED:20260327T120000Z", "+PERCENT-COMPLETE:100",
                            "-STATUS:NEEDS-ACTION"));
    const auto reopen = [](EKReminderData& data) {
        data.isCompleted = false;
        data.completionDate.reset();
    };
    for (const char* lines : {"STATUS:COMPLETED\nCOMPLETED:20260101T000000Z\nPERCENT-COMPLETE:100\n",
                              "PERCENT-COMPLETE:100\n", "COMPLETED:20260101T000000Z\n", "STATUS:CANCELLED\n"})
        EXPECT_EQ(edit(lines, reopen).changes.first(), "+STATUS:NEEDS-ACTION");
}

TEST(TodoWritingTest, WritesTheDueDateInPlaceOfADuration) {
    const QByteArray lines = "DTSTART:20260327T090000Z\nDURATION:PT1H\n";
    EXPECT_THAT(edit(lines,
                     [](EKReminderData& data) {
                         data.dueDateComponents =
                             DateComponents::fromDateTime({2026, 3, 28}, {9, 0}, TimeZone::named("UTC"));
                     })
                    .changes,
                ElementsAre("+DUE:20260328T090000Z", "-DURATION:PT1H"));
    EXPECT_THAT(edit(lines,
                     [](EKReminderData& data) {
                         data.startDateComponents =
                             DateComponents::fromDateTime({2026, 3, 27}, {8, 0}, TimeZone::named("UTC"));
                     })
                    .changes,
                ElementsAre("+DTSTART:20260327T080000Z", "+DUE:20260327T100000Z", "-DTSTART:20260327T090000Z",
                            "-DURATION:PT1H"));
}

TEST(TodoWritingTest, MarksTheRevision) {
    Document document =
        *Document::parse("BEGIN:VCALENDAR\nBEGIN:VTODO\nUID:1\nDTSTAMP:20250101T000000Z\nSEQUENCE:4\n"
                         "END:VTODO\nEND:VCALENDAR\n");
    const TodoItem item = readTodos(document, paris).at(0);
    EKReminderData after = item.data;
    after.title = "x";
    Component component(document.components("VTODO")[0].lines());
    writeTodo(component, item, after, document, paris, now);
    EXPECT_EQ(component.view().text(),
              "BEGIN:VTODO\nUID:1\nDTSTAMP:20260327T120000Z\nSEQUENCE:5\nSUMMARY:x\n"
              "CREATED:20250101T000000Z\nLAST-MODIFIED:20260327T120000Z\nEND:VTODO\n");
}

const QByteArray relativeAlarm = "BEGIN:VALARM\nACTION:DISPLAY\nX-OWN:1\nTRIGGER:-PT5M\nEND:VALARM\n";
const QByteArray absoluteAlarm = "BEGIN:VALARM\nUID:a1\nACTION:DISPLAY\nTRIGGER;VALUE=DATE-TIME:"
                                 "20260327T084500Z\nACKNOWLEDGED:20260326T000000Z\n"
                                 "END:VALARM\n";

TEST(TodoWritingTest, LeavesOtherAlarmsAloneWhenOneIsReplaced) {
    const QByteArray lines = "DUE:20260327T090000Z\n" + relativeAlarm + absoluteAlarm;
    const Edit replaced = edit(lines, [](EKReminderData& data) {
        const auto old = data.alarms[1];
        data.alarms.erase(data.alarms.begin() + 1);
        data.alarms.push_back(EKAlarm::at(at("UTC", {2026, 3, 27}, {8, 0})));
    });
    EXPECT_TRUE(replaced.changes.contains("+TRIGGER;VALUE=DATE-TIME:20260327T080000Z"));
    EXPECT_TRUE(replaced.changes.contains("-TRIGGER;VALUE=DATE-TIME:20260327T084500Z"));
    EXPECT_EQ(replaced.readBack.alarms[0].sourceText, relativeAlarm);

    const Edit bound = edit(lines, [](EKReminderData& data) {
        data.alarms[0].relativeOffset.reset();
        data.alarms[0].absoluteDate = at("UTC", {2026, 3, 28}, {8, 45});
    });
    EXPECT_EQ(bound.changes.size(), 2) << bound.changes.join('\n').constData();
    EXPECT_TRUE(bound.changes.contains("+TRIGGER;VALUE=DATE-TIME:20260328T084500Z"));
    const Edit followed = edit(lines, [](EKReminderData& data) {
        data.dueDateComponents = DateComponents::fromDateTime({2026, 4, 1}, {9, 0}, TimeZone::named("UTC"));
    });
    EXPECT_THAT(followed.changes, ElementsAre("+DUE:20260401T090000Z", "-DUE:20260327T090000Z"));

    const Edit moved = edit(lines, [](EKReminderData& data) {
        data.alarms[1].absoluteDate = at("UTC", {2026, 3, 28}, {8, 45});
    });
    EXPECT_THAT(moved.changes, ElementsAre("+TRIGGER;VALUE=DATE-TIME:20260328T084500Z",
                                           "-TRIGGER;VALUE=DATE-TIME:20260327T084500Z"));
}

TEST(TodoWritingTest, CopiesAnAlarmWithItsText) {
    EKAlarm foreign{
        .relativeOffset = std::chrono::minutes(-5), .followsStart = true, .sourceText = relativeAlarm};
    foreign.sourceText.replace("\n", "\r\n");
    const Edit copied =
        edit("DUE:20260327T090000Z\n", [&](EKReminderData& data) { data.alarms = {foreign}; });
    EXPECT_EQ(copied.readBack.alarms[0].sourceText, relativeAlarm);
}

TEST(TodoWritingTest, NotesThatAnAlarmWasDealtWithAndRingsOnceMore) {
    const Edit snoozed =
        edit("DUE:20260327T090000Z\n" + relativeAlarm + absoluteAlarm, [](EKReminderData& data) {
            data.alarms[0].acknowledgedDate = now;
            data.alarms[0].identifier = "a0";
            data.alarms[1].acknowledgedDate = now;
            EKAlarm again = EKAlarm::at(at("UTC", {2026, 3, 27}, {12, 10}));
            again.snoozedAlarm = "a0";
            data.alarms.push_back(again);
        });
    EXPECT_THAT(snoozed.changes,
                ElementsAre("+UID:a0", "+ACKNOWLEDGED:20260327T120000Z", "+ACKNOWLEDGED:20260327T120000Z",
                            "+BEGIN:VALARM", "+ACTION:DISPLAY", "+DESCRIPTION:",
                            "+TRIGGER;VALUE=DATE-TIME:20260327T121000Z", "+RELATED-TO;RELTYPE=SNOOZE:a0",
                            "+END:VALARM", "-ACKNOWLEDGED:20260326T000000Z"));
}

TEST(TodoWritingTest, FlagsAndUnflags) {
    const auto flag = [](bool on) { return [on](EKReminderData& data) { data.isFlagged = on; }; };
    EXPECT_THAT(edit("", flag(true)).changes, ElementsAre("+X-PINNED:true"));
    EXPECT_THAT(edit("X-PINNED:TRUE\n", flag(true)).changes, IsEmpty());
    EXPECT_THAT(edit("X-PINNED:TRUE\n", flag(false)).changes, ElementsAre("-X-PINNED:TRUE"));
    EXPECT_THAT(edit("X-PINNED:false\n", flag(false)).changes, IsEmpty());
}

TEST(TodoWritingTest, WritesNewAlarmsOfEveryKind) {
    EKAlarm place;
    place.structuredLocation = EKStructuredLocation{"Home \"sweet\"; 3:00", 48.85, 2.35, 100};
    place.proximity = EKAlarmProximity::leave;
    EKAlarm relative;
    relative.relativeOffset = std::chrono::hours(-1);
    const Edit written = edit("DTSTART:20260327T080000Z\nDUE:20260327T090000Z\n", [&](EKReminderData& data) {
        data.alarms = {relative, EKAlarm::at(now)};
    });
    EXPECT_TRUE(written.changes.contains("+TRIGGER;RELATED=END:-PT1H"));

    Document document = Document::make();
    EKReminderData data = aReminder("").titled("x");
    data.alarms = {place};
    document = makeTodo("1", data, paris, now);
    const EKAlarm read = readTodos(document, paris).at(0).data.alarms.at(0);
    EXPECT_EQ(read.structuredLocation, (EKStructuredLocation{"Home sweet; 3:00", 48.85, 2.35, 100}));
    EXPECT_EQ(read.proximity, EKAlarmProximity::leave);
    EXPECT_EQ(read.absoluteDate, std::nullopt);
}

TEST(TodoWritingTest, WritesANewReminderInTheOrderOthersDo) {
    const EKReminderData data = aReminder("").titled("Buy, 1 l").due({2026, 3, 28}).created(now);
    EXPECT_EQ(
        makeTodo("ABC", data, paris, now).text(),
        "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Kestrant//Kestrant//EN\r\nBEGIN:VTODO\r\nUID:ABC\r\n"
        "DTSTAMP:20260327T120000Z\r\nCREATED:20260327T120000Z\r\nSUMMARY:Buy\\, 1 "
        "l\r\nSTATUS:NEEDS-ACTION\r\n"
        "DUE;VALUE=DATE:20260328\r\nLAST-MODIFIED:20260327T120000Z\r\nEND:VTODO\r\nEND:VCALENDAR\r\n");
}

TEST(TodoWritingTest, DefinesTheZonesItUses) {
    Document document = makeTodo(
        "1", aReminder("").titled("x").due({2026, 3, 28}, {9, 0}, "Europe/Paris").created(now), paris, now);
    addMissingTimeZones(document, Document::make(), 2025);
    ASSERT_EQ(document.components("VTIMEZONE").size(), 1U);
    const QByteArray text = document.text();
    addMissingTimeZones(document, Document::make(), 2025);
    EXPECT_EQ(document.text(), text);
    EXPECT_LT(text.indexOf("BEGIN:VTIMEZONE"), text.indexOf("BEGIN:VTODO"));
}

/// Completes the present occurrence of the one series in a file.
struct Completed {
    QByteArray series;
    QByteArray copy;
    EKReminderData next;
};

Completed completeSeries(const QByteArray& components) {
    Document document =
        *Document::parse("BEGIN:VCALENDAR\nX-WR-CALNAME:n\n" + components + "END:VCALENDAR\n");
    const TodoItem item = readTodos(document, paris).at(0);
    EKReminderData data = item.data;
    data.isCompleted = true;
    data.completionDate = now;
    const CompletedOccurrence step = completeOccurrence(data, item.dates, now, paris);
    Component component(document.components("VTODO")[static_cast<std::size_t>(item.index)].lines());
    Completed result;
    result.copy = makeCompletedCopy("NEW", document, item, step.copy.value_or(data), paris, now).text();
    writeAdvancedTodo(component, item, step, document, paris, now);
    document.replace(item.index, component);
    result.series = document.text();
    result.next = readTodos(document, paris).at(0).data;
    return result;
}

TEST(TodoWritingTest, LeavesACompletedCopyOfTheDateThatASeriesShows) {
    const Completed done = completeSeries(
        "BEGIN:VTODO\nUID:old\nDTSTART;VALUE=DATE:20260326\nDUE;VALUE=DATE:20260327\nRRULE:FREQ=WEEKLY\n"
        "X-KDE-LIBKCAL-DTRECURRENCE;VALUE=DATE:20260402\nEND:VTODO\n");
    EXPECT_TRUE(done.copy.contains("DTSTART;VALUE=DATE:20260402\nDUE;VALUE=DATE:20260403\n"));
}

TEST(TodoWritingTest, CountsANewRuleFromTheDateThatASeriesShows) {
    const QByteArray series = "DTSTART;VALUE=DATE:20260326\nDUE;VALUE=DATE:20260327\nRRULE:FREQ=WEEKLY\n"
                              "X-KDE-LIBKCAL-DTRECURRENCE;VALUE=DATE:20260402\n";
    for (const auto& rules : {std::vector{EKRecurrenceRule::every(EKRecurrenceFrequency::monthly)}, {}}) {
        const Edit changed = edit(series, [&](EKReminderData& data) { data.recurrenceRules = rules; });
        EXPECT_EQ(changed.readBack.dueDateComponents, DateComponents::fromDate({2026, 4, 3}));
    }
}

TEST(TodoWritingTest, LeavesACompletedCopyThatNeitherRecursNorRings) {
    const Completed done =
        completeSeries("BEGIN:VTODO\nUID:old\nSUMMARY:Water\nX-PINNED:TRUE\n"
                       "DUE;VALUE=DATE:20260327\nRRULE:FREQ=WEEKLY\nEXDATE;VALUE=DATE:20260410\n" +
                       relativeAlarm + "END:VTODO\nBEGIN:VEVENT\nUID:e\nEND:VEVENT\n");
    EXPECT_EQ(done.copy,
              "BEGIN:VCALENDAR\nX-WR-CALNAME:n\nBEGIN:VTODO\nUID:NEW\nSUMMARY:Water\nX-PINNED:TRUE\n"
              "DUE;VALUE=DATE:20260327\nSTATUS:COMPLETED\nCOMPLETED:20260327T120000Z\n"
              "PERCENT-COMPLETE:100\nLAST-MODIFIED:20260327T120000Z\nDTSTAMP:20260327T120000Z\n"
              "RELATED-TO;RELTYPE=SIBLING:old\nEND:VTODO\nEND:VCALENDAR\n");
    EXPECT_EQ(done.next.dueDateComponents, DateComponents::fromDate({2026, 4, 3}));
    EXPECT_TRUE(done.series.contains("UID:e\n"));
    EXPECT_TRUE(done.series.contains(relativeAlarm));
}

TEST(TodoWritingTest, MovesASeriesOnFromTheDateItShows) {
    struct Case {
        const char* what;
        QByteArray components;
        QDate next;
        QByteArray expectedLine;
        QByteArray goneLine;
    };
    const QByteArray head = "BEGIN:VTODO\nUID:1\nDTSTART;VALUE=DATE:20260326\nDUE;VALUE=DATE:20260327\n";
    const Case cases[] = {
        {"the mark of the present date",
         head + "RRULE:FREQ=DAILY;COUNT=9\nX-KDE-LIBKCAL-DTRECURRENCE;VALUE=DATE:20260328\nEND:VTODO\n",
         {2026, 3, 30},
         "RRULE:FREQ=DAILY;COUNT=6\n",
         "X-KDE"},
        {"a date done by itself",
         head + "RRULE:FREQ=DAILY\nEND:VTODO\nBEGIN:VTODO\nUID:1\nRECURRENCE-ID;VALUE=DATE:20260326\n"
                "STATUS:COMPLETED\nEND:VTODO\n",
         {2026, 3, 29},
         "DTSTART;VALUE=DATE:20260328\n",
         "DTSTART;VALUE=DATE:20260326\n"},
        {"an extra date between the dates of the rule",
         head + "RRULE:FREQ=WEEKLY\nRDATE;VALUE=DATE:20260329\nEND:VTODO\n",
         {2026, 3, 30},
         "X-KDE-LIBKCAL-DTRECURRENCE;VALUE=DATE:20260329\n",
         "DTSTART;VALUE=DATE:20260329\n"},
        {"after that extra date",
         head + "RRULE:FREQ=WEEKLY;COUNT=5\nRDATE;VALUE=DATE:20260329\nX-KDE-LIBKCAL-DTRECURRENCE;VALUE=DATE:"
                "20260329\n"
                "END:VTODO\n",
         {2026, 4, 3},
         "RRULE:FREQ=WEEKLY;COUNT=4\n",
         "RDATE"},
        {"extra dates alone",
         head + "RDATE;VALUE=DATE:20260328,20260330\nEND:VTODO\n",
         {2026, 3, 29},
         "RDATE;VALUE=DATE:20260330\n",
         "20260328,"},
    };
    for (const Case& each : cases) {
        const Completed done = completeSeries(each.components);
        EXPECT_EQ(done.next.dueDateComponents, DateComponents::fromDate(each.next)) << each.what;
        EXPECT_TRUE(done.series.contains(each.expectedLine)) << each.what << "\n" << done.series.constData();
        EXPECT_FALSE(done.series.contains(each.goneLine)) << each.what << "\n" << done.series.constData();
    }
}

}  // namespace
}  // namespace kestrant::icalendar
