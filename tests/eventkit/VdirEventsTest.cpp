#include "VdirFolder.h"
#include "eventkit/items/EventFetch.h"
#include "eventkit/vdir/VdirDatabase.h"
#include "support/DiskLimit.h"
#include "support/EventBuilders.h"

#include <QByteArrayList>

#include <gmock/gmock.h>

namespace kestrant {
namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using vdir::VdirDatabase;

const TimeZone paris{*TimeZone::named("Europe/Paris")};
const Instant now = at("UTC", {2026, 3, 27}, {12, 0});
const Instant march = at("Europe/Paris", {2026, 3, 1});
const Instant may = at("Europe/Paris", {2026, 5, 1});

QByteArray fileWith(const QByteArray& components) {
    return "BEGIN:VCALENDAR\nX-KEEP:1\n" + components + "END:VCALENDAR\n";
}

QByteArray event(const QByteArray& lines, const QByteArray& uid = "1") {
    return "BEGIN:VEVENT\nUID:" + uid + "\nCREATED:20260101T000000Z\nX-KEEP;P=1:me\n" + lines +
           "END:VEVENT\n";
}

/// What became of a file: the lines taken away with "-", new ones with "+", in their order, without the marks
/// of a revision.
std::vector<std::string> differences(const QByteArray& before, const QByteArray& after) {
    std::vector<std::string> result;
    const auto add = [&](char sign, const QByteArray& line) {
        if (!line.startsWith("LAST-MODIFIED") && !line.startsWith("DTSTAMP") && !line.startsWith("SEQUENCE"))
            result.push_back(sign + line.toStdString());
    };
    QByteArrayList old = before.split('\n');
    for (const QByteArray& line : after.split('\n')) {
        if (!old.removeOne(line))
            add('+', line);
    }
    for (const QByteArray& line : old)
        add('-', line);
    return result;
}

class VdirEventsTest : public ::testing::Test {
  protected:
    void open() { ASSERT_FALSE(database.open(paris).has_value()); }
    [[nodiscard]] std::vector<std::shared_ptr<const EKEventData>> eventsFrom(Instant start,
                                                                             Instant end) const {
        return items::fetchEvents(*database.snapshot(), {start, end, {}}, now).found.events;
    }
    /// The events of March and April 2026, in their order.
    [[nodiscard]] std::vector<std::shared_ptr<const EKEventData>> events() const {
        auto result = eventsFrom(march, may);
        std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) {
            return std::tie(a->startDate, a->title) < std::tie(b->startDate, b->title);
        });
        return result;
    }
    [[nodiscard]] std::vector<QString> titles() const {
        std::vector<QString> result;
        for (const auto& data : events())
            result.push_back(data->title);
        return result;
    }
    template <typename Change>
    tl::expected<EKSaveResult, EKError> edit(const std::shared_ptr<const EKEventData>& base, Change change) {
        EKEventData edited = *base;
        change(edited);
        return database.saveEvent(base, edited, now, paris);
    }
    /// Edits an occurrence of the one event in a file.
    template <typename Change>
    std::vector<std::string> changed(const QByteArray& components, Change change,
                                     std::size_t occurrence = 0) {
        const QByteArray before = fileWith(components);
        folder.put("work/a.ics", before);
        open();
        const auto base = events().at(occurrence);
        EKEventData wanted = *base;
        change(wanted);
        const auto saved = database.saveEvent(base, wanted, now, paris);
        EXPECT_TRUE(saved.has_value()) << (saved ? "" : qPrintable(saved.error().message.english));
        const auto shown = database.snapshot()->event(base->calendarItemIdentifier, base->occurrenceDate);
        EXPECT_TRUE(shown);
        if (shown) {
            EXPECT_EQ(shown->startDate, wanted.startDate);
            EXPECT_EQ(shown->endDate, wanted.endDate);
            EXPECT_EQ(shown->isAllDay, wanted.isAllDay);
            EXPECT_EQ(shown->title, wanted.title);
        }
        return differences(before, folder.content("work/a.ics"));
    }

    VdirFolder folder;
    VdirDatabase database{folder.nativeRoot()};
};

constexpr auto rename = [](EKEventData& data) { data.title = "new"; };
constexpr auto moveByAnHour = [](EKEventData& data) {
    data.startDate += 1h;
    data.endDate += 1h;
};
constexpr auto lengthenByAnHour = [](EKEventData& data) { data.endDate += 1h; };
constexpr auto lengthenByADay = [](EKEventData& data) { data.endDate += 24h; };

TEST_F(VdirEventsTest, ChangesOnlyTheLinesOfWhatChanged) {
    const QByteArray lunch = "SUMMARY;LANGUAGE=en:Lunch\nDESCRIPTION:with\n  everyone\n"
                             "DTSTART;X-A=b;TZID=Romance Standard Time:20260327T120000\n"
                             "DTEND;TZID=Romance Standard Time:20260327T130000\nSTATUS:CONFIRMED\n"
                             "BEGIN:VALARM\nACTION:DISPLAY\nX-OWN:1\nTRIGGER:-PT5M\nEND:VALARM\n";
    EXPECT_THAT(changed(event(lunch), rename),
                ElementsAre("+SUMMARY;LANGUAGE=en:new", "-SUMMARY;LANGUAGE=en:Lunch"));
    EXPECT_THAT(changed(event(lunch), [](EKEventData& data) { data.notes.reset(); }),
                ElementsAre("-DESCRIPTION:with", "-  everyone"));
    EXPECT_THAT(changed(event(lunch), [](EKEventData& data) { data.location = "Here; there"; }),
                ElementsAre("+LOCATION:Here\\; there"));
    EXPECT_THAT(changed(event(lunch), lengthenByAnHour),
                ElementsAre("+DTEND;TZID=Romance Standard Time:20260327T140000",
                            "-DTEND;TZID=Romance Standard Time:20260327T130000"));
    EXPECT_THAT(changed(event(lunch), moveByAnHour),
                ElementsAre("+DTSTART;X-A=b;TZID=Romance Standard Time:20260327T130000",
                            "+DTEND;TZID=Romance Standard Time:20260327T140000",
                            "-DTSTART;X-A=b;TZID=Romance Standard Time:20260327T120000",
                            "-DTEND;TZID=Romance Standard Time:20260327T130000"));
}

TEST_F(VdirEventsTest, WritesTimesTheWayTheFileHasThem) {
    struct Case {
        QByteArray lines;
        void (*change)(EKEventData&);
        std::vector<std::string> expected;
    };
    const Case cases[] = {
        // A duration stays one, and is touched only when the length changes.
        {"DTSTART:20260327T120000Z\nDURATION:PT1H30M\n",
         moveByAnHour,
         {"+DTSTART:20260327T130000Z", "-DTSTART:20260327T120000Z"}},
        {"DTSTART:20260327T120000Z\nDURATION:PT1H30M\n",
         lengthenByAnHour,
         {"+DURATION:PT150M", "-DURATION:PT1H30M"}},
        {"DTSTART;VALUE=DATE:20260327\nDURATION:P1D\n", lengthenByADay, {"+DURATION:P2D", "-DURATION:P1D"}},
        {"DTSTART;TZID=Europe/Paris:20260328T120000\nDURATION:PT1H\n",
         [](EKEventData& data) { data.endDate = data.startDate + 24h; },
         {"+DURATION:PT86400S", "-DURATION:PT1H"}},
        // An end in a zone of its own stays in it.
        {"DTSTART;TZID=Europe/Paris:20260327T120000\nDTEND;TZID=Asia/Tokyo:20260328T080000\n",
         lengthenByAnHour,
         {"+DTEND;TZID=Asia/Tokyo:20260328T090000", "-DTEND;TZID=Asia/Tokyo:20260328T080000"}},
        {"DTSTART:20260327T120000\nDTEND:20260327T130000\n",
         lengthenByAnHour,
         {"+DTEND:20260327T140000", "-DTEND:20260327T130000"}},
        {"DTSTART;TZID=Middle/Earth:20260327T120000\nDTEND;TZID=Middle/Earth:20260327T130000\n",
         lengthenByAnHour,
         {"+DTEND;TZID=Middle/Earth:20260327T140000", "-DTEND;TZID=Middle/Earth:20260327T130000"}},
        // What has no end gets one only when it lasts.
        {"DTSTART:20260327T120000Z\n",
         moveByAnHour,
         {"+DTSTART:20260327T130000Z", "-DTSTART:20260327T120000Z"}},
        {"DTSTART:20260327T120000Z\n", lengthenByAnHour, {"+DTEND:20260327T130000Z"}},
        {"DTSTART;VALUE=DATE:20260327\n", lengthenByADay, {"+DTEND;VALUE=DATE:20260329"}},
        {"DTSTART:20260327T120000Z\nDTEND:20260327T130000Z\n",
         [](EKEventData& data) { data.endDate = data.startDate; },
         {"-DTEND:20260327T130000Z"}},
        // An end that made no sense stays where it is not touched.
        {"DTSTART:20260327T120000Z\nDTEND:20260301T130000Z\n", rename, {"+SUMMARY:new"}},
        {"DTSTART;VALUE=DATE:20260327\nDTEND:20260327T130000Z\n", rename, {"+SUMMARY:new"}},
        {"DTSTART:20260327T120000Z\nDTEND:20260301T130000Z\n",
         lengthenByAnHour,
         {"+DTEND:20260327T130000Z", "-DTEND:20260301T130000Z"}},
        // From a time to a day and back.
        {"DTSTART;TZID=Europe/Paris:20260327T120000\nDTEND;TZID=Europe/Paris:20260327T130000\n",
         [](EKEventData& data) {
             data.isAllDay = true;
             data.timeZone.reset();
             data.startDate = at("Europe/Paris", {2026, 3, 27});
             data.endDate = at("Europe/Paris", {2026, 3, 28});
         },
         {"+DTSTART;VALUE=DATE:20260327", "+DTEND;VALUE=DATE:20260328",
          "-DTSTART;TZID=Europe/Paris:20260327T120000", "-DTEND;TZID=Europe/Paris:20260327T130000"}},
        {"DTSTART;VALUE=DATE:20260327\n",
         [](EKEventData& data) {
             data.isAllDay = false;
             data.timeZone = TimeZone::named("UTC");
             data.endDate = data.startDate + 1h;
         },
         {"+DTSTART:20260326T230000Z", "+DTEND:20260327T000000Z", "-DTSTART;VALUE=DATE:20260327"}},
        // The hour that comes twice: its second coming can only be said in UTC.
        {"DTSTART;TZID=Europe/Paris:20260405T023000\n",
         [](EKEventData& data) {
             data.startDate = data.endDate = at("UTC", {2026, 4, 5}, {2, 30});
         },
         {"+DTSTART;TZID=Europe/Paris:20260405T043000", "-DTSTART;TZID=Europe/Paris:20260405T023000"}},
        {"DTSTART;TZID=Australia/Sydney:20260405T023000\n",
         [](EKEventData& data) { data.startDate = data.endDate += 1h; },
         {"+DTSTART:20260404T163000Z", "-DTSTART;TZID=Australia/Sydney:20260405T023000"}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(changed(event(each.lines), each.change), each.expected) << each.lines.constData();
}

TEST_F(VdirEventsTest, MarksTheRevision) {
    folder.put("work/a.ics", fileWith("BEGIN:VEVENT\nUID:1\nDTSTAMP:20250101T000000Z\nSEQUENCE:4\n"
                                      "DTSTART:20260327T120000Z\nEND:VEVENT\n"));
    open();
    ASSERT_TRUE(edit(events().at(0), rename).has_value());
    EXPECT_EQ(
        folder.content("work/a.ics"),
        fileWith("BEGIN:VEVENT\nUID:1\nDTSTAMP:20260327T120000Z\nSEQUENCE:5\nDTSTART:20260327T120000Z\n"
                 "SUMMARY:new\nCREATED:20250101T000000Z\nLAST-MODIFIED:20260327T120000Z\nEND:VEVENT\n"));
}

const QByteArray standup = "SUMMARY:Stand-up\nDTSTART;TZID=Europe/Paris:20260327T090000\nDURATION:PT15M\n"
                           "RRULE:FREQ=DAILY;COUNT=4\nEXDATE;TZID=Europe/Paris:20260328T090000\n"
                           "BEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT5M\nEND:VALARM\n";

TEST_F(VdirEventsTest, WritesAChangedOccurrenceBesideItsSeries) {
    const QByteArray series = event(standup);
    folder.put("work/a.ics", fileWith(series));
    open();
    ASSERT_TRUE(edit(events().at(1), [](EKEventData& data) {
                    data.title = "Planning";
                    data.startDate += 1h;
                    data.endDate += 2h;
                }).has_value());
    const QByteArray change =
        "BEGIN:VEVENT\nUID:1\nCREATED:20260101T000000Z\nX-KEEP;P=1:me\nSUMMARY:Planning\n"
        "DTSTART;TZID=Europe/Paris:20260329T100000\nDURATION:PT75M\n"
        "RECURRENCE-ID;TZID=Europe/Paris:20260329T090000\nLAST-MODIFIED:20260327T120000Z\n"
        "DTSTAMP:20260327T120000Z\nSEQUENCE:1\nBEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT5M\nEND:VALARM\n"
        "END:VEVENT\n";
    EXPECT_EQ(folder.content("work/a.ics").toStdString(), fileWith(series + change).toStdString());

    // The next change of it touches only itself.
    const QByteArray before = folder.content("work/a.ics");
    ASSERT_TRUE(edit(events().at(1), rename).has_value());
    EXPECT_THAT(differences(before, folder.content("work/a.ics")),
                ElementsAre("+SUMMARY:new", "-SUMMARY:Planning"));
}

TEST_F(VdirEventsTest, NamesDatesOfASeriesInItsOwnForm) {
    struct Case {
        QByteArray start;
        QByteArray expected;
    };
    for (const Case& each : {Case{"DTSTART:20260328T080000Z\n", ":20260329T080000Z"},
                             Case{"DTSTART:20260328T090000\n", ":20260329T090000"},
                             Case{"DTSTART;VALUE=DATE:20260328\n", ";VALUE=DATE:20260329"},
                             Case{"DTSTART;X-A=b;TZID=Romance Standard Time:20260328T023000\n",
                                  ";TZID=Romance Standard Time:20260329T023000"}}) {
        const QByteArray text = fileWith(event(each.start + "RRULE:FREQ=DAILY;COUNT=3\n"));
        folder.put("work/a.ics", text);
        open();
        ASSERT_TRUE(edit(events().at(1), rename).has_value());
        EXPECT_TRUE(folder.content("work/a.ics").contains("\nRECURRENCE-ID" + each.expected + '\n'))
            << folder.content("work/a.ics").constData();
        ASSERT_TRUE(database.removeEvent(*events().at(1), now, paris).has_value());
        EXPECT_THAT(differences(text, folder.content("work/a.ics")),
                    ElementsAre("+EXDATE" + each.expected.toStdString()));
        EXPECT_THAT(events(), SizeIs(2));
    }
}

TEST_F(VdirEventsTest, WritesANewEventWithTheZonesItUses) {
    folder.put("work/displayname", "Work");
    open();
    EKEventData data = anEvent("")
                           .titled("Café, 2 people")
                           .in("work")
                           .lasting(at("Europe/Paris", {2026, 3, 28}, {9, 0}), 1h)
                           .repeating("FREQ=WEEKLY");
    data.timeZone = TimeZone::named("Europe/Paris");
    const auto saved = database.saveEvent(nullptr, data, now, paris);
    ASSERT_TRUE(saved.has_value());
    const QByteArray uid = saved->calendarItemIdentifier.toUtf8();
    const QByteArray text = folder.content("work/" + uid + ".ics");
    EXPECT_TRUE(text.startsWith("BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Kestrant//Kestrant//EN\r\n"
                                "BEGIN:VTIMEZONE\r\nTZID:Europe/Paris\r\n"));
    EXPECT_TRUE(text.endsWith("END:VTIMEZONE\r\nBEGIN:VEVENT\r\nUID:" + uid +
                              "\r\nDTSTAMP:20260327T120000Z\r\nCREATED:20260327T120000Z\r\n"
                              "SUMMARY:Café\\, 2 people\r\nDTSTART;TZID=Europe/Paris:20260328T090000\r\n"
                              "DTEND;TZID=Europe/Paris:20260328T100000\r\nRRULE:FREQ=WEEKLY\r\n"
                              "LAST-MODIFIED:20260327T120000Z\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n"))
        << text.constData();
}

TEST_F(VdirEventsTest, ShowsAndChangesEveryEventWhateverItsUid) {
    const auto lunch = [](const char* title) {
        return QByteArray("SUMMARY:") + title + "\nDTSTART:20260327T120000Z\n";
    };
    folder.put("work/1.ics", fileWith(event(lunch("a"), "same")));
    folder.put("work/2.ics", fileWith(event(lunch("b"), "same")));
    folder.put("home/1.ics", fileWith(event(lunch("c"), "same")));
    folder.put("home/none.ics", fileWith(event(lunch("d")).replace("UID:1\n", "")));
    folder.put("home/pair.ics", fileWith(event(lunch("e"), "p") + event(lunch("f"), "p") +
                                         event("RECURRENCE-ID:20260401T120000Z\n" + lunch("g"), "q") +
                                         "BEGIN:VTODO\nUID:same\nSUMMARY:z\nEND:VTODO\n"));
    open();
    ASSERT_THAT(titles(), ElementsAre("a", "b", "c", "d", "e", "f", "g"));
    std::set<QString> identifiers;
    for (const auto& base : events()) {
        identifiers.insert(base->eventIdentifier);
        const auto saved = edit(base, [](EKEventData& data) { data.title += "!"; });
        ASSERT_TRUE(saved.has_value()) << qPrintable(base->title);
        EXPECT_EQ(saved->calendarItemIdentifier, base->calendarItemIdentifier);
    }
    EXPECT_THAT(identifiers, SizeIs(7));
    EXPECT_THAT(titles(), ElementsAre("a!", "b!", "c!", "d!", "e!", "f!", "g!"));
    for (const std::size_t i : {6U, 4U})
        ASSERT_TRUE(database.removeEvent(*events().at(i), now, paris).has_value());
    EXPECT_THAT(titles(), ElementsAre("a!", "b!", "c!", "d!", "f!"));
    EXPECT_EQ(database.snapshot()->reminders.size(), 1);
    ASSERT_TRUE(database.removeEvent(*events().at(0), now, paris).has_value());
    EXPECT_THAT(folder.names("work"), ElementsAre("2.ics"));
}

TEST_F(VdirEventsTest, MovesFilesBetweenCalendarsAndLosesNothing) {
    const QByteArray journal = "BEGIN:VJOURNAL\nUID:j\nEND:VJOURNAL\n";
    folder.put("work/a.ics", fileWith(event("SUMMARY:alone\nDTSTART:20260327T120000Z\n", "a")));
    folder.put("work/b.ics", fileWith(event("SUMMARY:both\nDTSTART:20260328T120000Z\n", "b") + journal));
    folder.put("home/a.ics", fileWith(event("SUMMARY:in the way\nDTSTART:20260329T120000Z\n", "z")));
    open();
    const auto toHome = [](EKEventData& data) { data.calendarIdentifier = "home"; };
    for (const std::size_t i : {0U, 1U}) {
        const auto saved = edit(events().at(i), toHome);
        ASSERT_TRUE(saved.has_value());
        EXPECT_EQ(saved->calendarItemIdentifier, i == 0 ? "a" : "b");
    }
    EXPECT_THAT(titles(), ElementsAre("alone", "both", "in the way"));
    EXPECT_THAT(folder.names("work"), ElementsAre("b.ics"));
    EXPECT_EQ(folder.content("work/b.ics"), fileWith(journal));
    EXPECT_EQ(folder.names("home").size(), 3U);
    EXPECT_TRUE(folder.content("home/b.ics").contains("X-KEEP:1"));
    EXPECT_TRUE(folder.content("home/a.ics").contains("in the way"));
    ASSERT_TRUE(edit(events().at(1), rename).has_value());
    ASSERT_TRUE(database.removeEvent(*events().at(1), now, paris).has_value());
}

TEST_F(VdirEventsTest, TakesAnOccurrenceOutOfItsSeriesWithAllItsText) {
    const QByteArray series = event(standup);
    folder.put("work/a.ics", fileWith(series));
    folder.put("home/displayname", "Home");
    open();
    const auto saved = edit(events().at(1), [](EKEventData& data) { data.calendarIdentifier = "home"; });
    ASSERT_TRUE(saved.has_value());
    EXPECT_THAT(differences(fileWith(series), folder.content("work/a.ics")),
                ElementsAre("+EXDATE;TZID=Europe/Paris:20260329T090000"));
    const QByteArray uid = saved->calendarItemIdentifier.toUtf8();
    const QByteArray separate = folder.content("home/" + uid + ".ics");
    EXPECT_TRUE(separate.endsWith(
        "BEGIN:VEVENT\nUID:" + uid +
        "\nCREATED:20260101T000000Z\nX-KEEP;P=1:me\nSUMMARY:Stand-up\n"
        "DTSTART;TZID=Europe/Paris:20260329T090000\nDURATION:PT15M\nLAST-MODIFIED:20260327T120000Z\n"
        "DTSTAMP:20260327T120000Z\nBEGIN:VALARM\nACTION:DISPLAY\nTRIGGER:-PT5M\nEND:VALARM\nEND:VEVENT\n"
        "END:VCALENDAR\n"))
        << separate.constData();
    EXPECT_EQ(folder.names("home").size(), 2U);
}

TEST_F(VdirEventsTest, MergesWithWhatIsOnTheDiskByNowOrRefuses) {
    const QByteArray original = fileWith(event(standup));
    struct Case {
        const char* what;
        QByteArray onDisk;
        std::optional<EKError::Code> refused;
    };
    const auto replaced = [&](const char* from, const char* to) {
        return QByteArray(original).replace(from, to);
    };
    const Case cases[] = {
        {"another property", replaced("X-KEEP;P=1:me\n", "X-KEEP;P=1:me\nLOCATION:Here\n"), std::nullopt},
        {"one not understood", replaced("P=1:me", "P=1:you"), std::nullopt},
        {"the same property", replaced("SUMMARY:Stand-up", "SUMMARY:theirs"), EKError::Code::conflict},
        {"the occurrence left out", replaced("EXDATE;", "EXDATE;TZID=Europe/Paris:20260329T090000\nEXDATE;"),
         EKError::Code::itemNotFound},
        {"the series at another hour", replaced("20260327T090000", "20260327T100000"),
         EKError::Code::itemNotFound},
        {"no series any more", replaced("RRULE:FREQ=DAILY;COUNT=4\n", ""), EKError::Code::itemNotFound},
        {"damaged", original.first(60), EKError::Code::storage},
        {"another event", fileWith(event(standup, "2")), EKError::Code::itemNotFound},
    };
    for (const Case& each : cases) {
        folder.put("work/a.ics", original);
        open();
        const auto base = events().at(1);
        folder.replace("work/a.ics", each.onDisk);
        const auto answer = edit(base, rename);
        EXPECT_EQ(answer ? std::nullopt : std::optional(answer.error().code), each.refused) << each.what;
        if (each.refused) {
            EXPECT_EQ(folder.content("work/a.ics"), each.onDisk) << each.what;
        } else {
            EXPECT_EQ(folder.content("work/a.ics").count("SUMMARY:new"), 1) << each.what;
            EXPECT_EQ(folder.content("work/a.ics").count("SUMMARY:Stand-up"), 1) << each.what;
        }
    }
}

TEST_F(VdirEventsTest, LosesNothingWhenTheDiskIsFull) {
    // Only the series has these.
    const QByteArray text =
        fileWith(event(standup + "EXDATE:" + QByteArray("20200101T000000Z,").repeated(100) + '\n'));
    folder.put("work/a.ics", text);
    folder.put("home/displayname", "Home");
    open();
    const DiskLimit limit(1500);
    const auto codeOf = [](const auto& answer) {
        return answer ? std::nullopt : std::optional(answer.error().code);
    };
    EXPECT_EQ(codeOf(edit(events().at(1), rename)), EKError::Code::storage);
    // The occurrence fits into a file of its own, the series without it does not any more.
    EXPECT_EQ(codeOf(edit(events().at(1), [](EKEventData& data) { data.calendarIdentifier = "home"; })),
              EKError::Code::storage);
    EXPECT_EQ(
        codeOf(database.saveEvent(nullptr, anEvent("").in("home").titled(QString(3000, 'x')), now, paris)),
        EKError::Code::storage);
    EXPECT_EQ(folder.content("work/a.ics"), text);
    EXPECT_THAT(folder.names("home"), ElementsAre("displayname"));
    EXPECT_THAT(events(), SizeIs(3));
}

TEST_F(VdirEventsTest, ShowsManyEventsOfOneDay) {
    QByteArray components;
    for (int i = 0; i < 5000; ++i)
        components += event("DTSTART;VALUE=DATE:20260327\n", QByteArray::number(i));
    folder.put("work/many.ics", fileWith(components));
    folder.put("work/long.ics",
               fileWith(event("DTSTART;VALUE=DATE:20250401\nDTEND;VALUE=DATE:20260506\n", "long")));
    open();
    EXPECT_THAT(events(), SizeIs(5001));
    const auto found = eventsFrom(may, may + 24h);
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0]->eventIdentifier, "long");
    EXPECT_THAT(eventsFrom(may + 120h, may + 144h), IsEmpty());
}

TEST_F(VdirEventsTest, FollowsThePersonIntoAnotherZone) {
    // In Paris the night of the second day is an hour short.
    folder.put("work/days.ics",
               fileWith(event("DTSTART;VALUE=DATE:20260328\nDTEND;VALUE=DATE:20260330\n", "days")));
    folder.put("work/floating.ics", fileWith(event("DTSTART:20260328T090000\nDURATION:PT1H\n", "floating")));
    folder.put(
        "work/zoned.ics",
        fileWith(event("DTSTART;TZID=Europe/Paris:20260328T090000\nDTEND:20260328T100000\n", "zoned")));
    folder.put("work/utc.ics", fileWith(event("DTSTART:20260328T080000Z\nDTEND:20260328T090000Z\n", "utc")));
    folder.put("work/ruled.ics",
               fileWith(event("DTSTART;VALUE=DATE:20260328\nRRULE:FREQ=DAILY;COUNT=2\n", "ruled")));
    open();
    EXPECT_FALSE(database.adopt(paris));
    const auto interval = [this](const char* identifier) {
        const auto shown = database.snapshot()->firstEvent(identifier);
        return DateInterval{shown->startDate, shown->endDate};
    };
    const DateInterval inUtc = interval("utc");
    for (const char* zone : {"Asia/Tokyo", "America/New_York", "Europe/Paris"}) {
        EXPECT_TRUE(database.adopt(*TimeZone::named(zone)));
        EXPECT_EQ(interval("days"), (DateInterval{at(zone, {2026, 3, 28}), at(zone, {2026, 3, 30})}));
        EXPECT_EQ(interval("floating"),
                  (DateInterval{at(zone, {2026, 3, 28}, {9, 0}), at(zone, {2026, 3, 28}, {10, 0})}));
        EXPECT_EQ(interval("zoned").start, at("Europe/Paris", {2026, 3, 28}, {9, 0}));
        EXPECT_EQ(interval("zoned").end, std::max(interval("zoned").start, at(zone, {2026, 3, 28}, {10, 0})));
        EXPECT_EQ(interval("utc"), inUtc);
        EXPECT_EQ(interval("ruled"), (DateInterval{at(zone, {2026, 3, 28}), at(zone, {2026, 3, 29})}));
        EXPECT_THAT(eventsFrom(at(zone, {2026, 3, 29}), at(zone, {2026, 3, 30})), SizeIs(2))
            << "the days and the second of the series, found where they are now";
    }
}

}  // namespace
}  // namespace kestrant
