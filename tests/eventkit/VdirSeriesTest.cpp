#include "VdirFolder.h"
#include "eventkit/items/EventFetch.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "support/EventBuilders.h"

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});
using Event = std::shared_ptr<const EKEventData>;

QByteArray fileWith(const QByteArray& components) {
    return "BEGIN:VCALENDAR\n" + components + "END:VCALENDAR\n";
}

QByteArray event(const QByteArray& uid, const QByteArray& lines) {
    return "BEGIN:VEVENT\n" + (uid.isEmpty() ? "" : "UID:" + uid + '\n') + lines + "END:VEVENT\n";
}

class VdirSeriesTest : public ::testing::Test {
  protected:
    void open(const QByteArray& components) {
        folder.put("home/displayname", "Home");
        folder.put("work/a.ics", fileWith(components));
        ASSERT_FALSE(database.open(paris).has_value());
    }
    /// The events of March and April 2026, in their order.
    [[nodiscard]] std::vector<Event> events() const {
        const DateInterval span{at("UTC", {2026, 3, 1}), at("UTC", {2026, 5, 1})};
        auto result = items::fetchEvents(*database.snapshot(), {span.start, span.end, {}}, now).found.events;
        std::sort(result.begin(), result.end(), [](const Event& a, const Event& b) {
            return std::tie(a->startDate, a->title) < std::tie(b->startDate, b->title);
        });
        return result;
    }
    /// "2026-03-27T12:00:00Z title".
    [[nodiscard]] std::vector<std::string> shown() const {
        std::vector<std::string> result;
        for (const Event& each : events())
            result.push_back((toIso8601(each->startDate) + u' ' + each->title).toStdString());
        return result;
    }
    template <typename Change>
    void edit(const Event& base, Change change) {
        EKEventData edited = *base;
        change(edited);
        const auto saved = database.saveEvent(base, edited, now, paris);
        ASSERT_TRUE(saved.has_value()) << qPrintable(saved.error().message.english);
    }
    [[nodiscard]] QByteArray text() const { return folder.content("work/a.ics"); }

    static void rename(EKEventData& data) { data.title = QStringLiteral("new"); }
    static void moveHome(EKEventData& data) { data.calendarIdentifier = QStringLiteral("home"); }

    VdirFolder folder;
    vdir::VdirDatabase database{folder.nativeRoot()};
};

TEST_F(VdirSeriesTest, AChangeThatSaysNoStartKeepsItsDateWhereverItGoes) {
    const QByteArray series = event("1", "SUMMARY:s\nDTSTART;TZID=Europe/Paris:20260327T090000\n"
                                         "DURATION:PT1H\nRRULE:FREQ=DAILY;COUNT=2\n");
    for (const char* date :
         {"RECURRENCE-ID;TZID=Europe/Paris:20260328T090000\n", "RECURRENCE-ID:20260328T080000Z\n"}) {
        open(series + event("1", QByteArray(date) + "SUMMARY:c\nDURATION:PT1H\n"));
        edit(events().at(1), moveHome);
        EXPECT_THAT(shown(), ElementsAre("2026-03-27T08:00:00Z s", "2026-03-28T08:00:00Z c")) << date;
        EXPECT_EQ(events().at(1)->calendarIdentifier, "home");
        folder.removeAll();
        (void)database.open(paris);
    }
}

TEST_F(VdirSeriesTest, OneDateOfASeriesThatIsNotHereDoesNotRecur) {
    open(event("1", "RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T090000Z\nRRULE:FREQ=DAILY\n"
                    "RDATE:20260405T090000Z\nSUMMARY:one\n"));
    EXPECT_THAT(shown(), ElementsAre("2026-03-28T09:00:00Z one"));
    edit(events().at(0), rename);
    EXPECT_THAT(shown(), ElementsAre("2026-03-28T09:00:00Z new"));
    EXPECT_EQ(text().count("RECURRENCE-ID"), 1);
    EXPECT_EQ(text().count("RRULE:FREQ=DAILY\n"), 1);
}

TEST_F(VdirSeriesTest, SeriesThatShareAUidHaveTheirOwnChanges) {
    for (const QByteArray uid : {"same", ""}) {
        const auto daily = [&](const char* title, const char* time) {
            return event(uid, QByteArray("SUMMARY:") + title + "\nDTSTART:20260327T" + time +
                                  "Z\nRRULE:FREQ=DAILY;COUNT=2\n");
        };
        // As this program writes them, at one time of day and at different ones.
        for (const char* time : {"080000", "100000"}) {
            open(daily("a", "080000") + daily("b", time));
            const std::string hour = QByteArray(time).first(2).toStdString();
            for (const std::size_t i : {1U, 3U}) {
                const Event base = events().at(i);
                edit(base, [&](EKEventData& data) { data.title += QStringLiteral("!"); });
            }
            EXPECT_EQ(text().count("RECURRENCE-ID"), 2);
            EXPECT_THAT(shown(), testing::UnorderedElementsAre(
                                     "2026-03-27T08:00:00Z a", "2026-03-27T" + hour + ":00:00Z b!",
                                     "2026-03-28T08:00:00Z a", "2026-03-28T" + hour + ":00:00Z b!"))
                << uid.constData() << time;
            folder.removeAll();
            (void)database.open(paris);
        }
        // As others may: behind both, in whatever order.
        open(daily("a", "080000") + daily("b", "100000") +
             event(uid, "RECURRENCE-ID:20260328T100000Z\nDTSTART:20260328T110000Z\nSUMMARY:B\n") +
             event(uid, "RECURRENCE-ID:20260328T080000Z\nDTSTART:20260328T070000Z\nSUMMARY:A\n"));
        EXPECT_THAT(shown(), ElementsAre("2026-03-27T08:00:00Z a", "2026-03-27T10:00:00Z b",
                                         "2026-03-28T07:00:00Z A", "2026-03-28T11:00:00Z B"));
        folder.removeAll();
        (void)database.open(paris);
    }
}

/// The rules of the United States with names and definitions of their own.
const QByteArray pacificTime =
    "BEGIN:VTIMEZONE\nTZID:Pacific Time (US & Canada)\nBEGIN:STANDARD\nDTSTART:19671029T020000\n"
    "TZOFFSETFROM:-0700\nTZOFFSETTO:-0800\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU;UNTIL=20061029T090000Z\n"
    "END:STANDARD\nBEGIN:STANDARD\nDTSTART:20071104T020000\nTZOFFSETFROM:-0700\nTZOFFSETTO:-0800\n"
    "RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU\nEND:STANDARD\nBEGIN:DAYLIGHT\nDTSTART:19870405T020000\n"
    "TZOFFSETFROM:-0800\nTZOFFSETTO:-0700\nRRULE:FREQ=YEARLY;BYMONTH=4;BYDAY=1SU;UNTIL=20060402T100000Z\n"
    "END:DAYLIGHT\nBEGIN:DAYLIGHT\nDTSTART:20070311T020000\nTZOFFSETFROM:-0800\nTZOFFSETTO:-0700\n"
    "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\nEND:DAYLIGHT\nEND:VTIMEZONE\n";

TEST_F(VdirSeriesTest, FollowsTheClocksThatItsFileDefines) {
    const QByteArray zoned = ";TZID=Pacific Time (US & Canada):";
    open(pacificTime + event("1", "SUMMARY:s\nDTSTART" + zoned + "20030105T100000\nDTEND" + zoned +
                                      "20030105T110000\nRRULE:FREQ=MONTHLY;BYDAY=1SU,3SU\n"));
    // Clocks were set in April when the series began, and are set in March today.
    EXPECT_THAT(shown(), ElementsAre("2026-03-01T18:00:00Z s", "2026-03-15T17:00:00Z s",
                                     "2026-04-05T17:00:00Z s", "2026-04-19T17:00:00Z s"));
    const QByteArray before = text();
    edit(events().at(1), [](EKEventData& data) {
        data.startDate += 24h;
        data.endDate += 25h;
    });
    EXPECT_EQ(text(), QByteArray(before).replace("END:VCALENDAR\n", text().sliced(before.size() - 14)));
    EXPECT_TRUE(text().contains("\nRECURRENCE-ID" + zoned + "20260315T100000\n")) << text().constData();
    EXPECT_TRUE(
        text().contains("\nDTSTART" + zoned + "20260316T100000\nDTEND" + zoned + "20260316T120000\n"));
    // It takes the definition along.
    edit(events().at(1), moveHome);
    EXPECT_THAT(shown(), ElementsAre("2026-03-01T18:00:00Z s", "2026-03-16T17:00:00Z s",
                                     "2026-04-05T17:00:00Z s", "2026-04-19T17:00:00Z s"));
    // A new event in that zone has a definition, too.
    EKEventData copy = *events().at(1);
    copy.calendarIdentifier = QStringLiteral("work");
    copy.occurrenceDate.reset();
    ASSERT_TRUE(database.saveEvent(nullptr, copy, now, paris).has_value());
    EXPECT_THAT(shown(), testing::Contains("2026-03-16T17:00:00Z s").Times(2));
}

TEST_F(VdirSeriesTest, ADateOfAChangeForAllLaterDatesIsChangedByItself) {
    const QByteArray series = event("1", "SUMMARY:a\nDTSTART:20260327T090000Z\nRRULE:FREQ=DAILY;COUNT=4\n");
    const QByteArray later = event("1", "SUMMARY:b\nRECURRENCE-ID;RANGE=THISANDFUTURE:20260328T090000Z\n"
                                        "DTSTART:20260328T100000Z\nDURATION:PT1H\n");
    open(series + later);
    ASSERT_THAT(shown(), ElementsAre("2026-03-27T09:00:00Z a", "2026-03-28T10:00:00Z b",
                                     "2026-03-29T10:00:00Z b", "2026-03-30T10:00:00Z b"));
    // The first of them and another one; neither changes the others.
    edit(events().at(1), rename);
    edit(events().at(2), [](EKEventData& data) { data.startDate -= 1h; });
    EXPECT_THAT(shown(), ElementsAre("2026-03-27T09:00:00Z a", "2026-03-28T10:00:00Z new",
                                     "2026-03-29T09:00:00Z b", "2026-03-30T10:00:00Z b"));
    EXPECT_TRUE(text().contains(series) && text().contains(later)) << text().constData();
    for (int i = 0; i < 2; ++i)
        ASSERT_TRUE(database.removeEvent(*events().at(1), now, paris).has_value());
    EXPECT_THAT(shown(), ElementsAre("2026-03-27T09:00:00Z a", "2026-03-30T10:00:00Z b"));
    ASSERT_TRUE(database.removeEvent(*events().at(1), now, paris).has_value());
    EXPECT_THAT(shown(), ElementsAre("2026-03-27T09:00:00Z a"));
}

}  // namespace
}  // namespace kestrant
