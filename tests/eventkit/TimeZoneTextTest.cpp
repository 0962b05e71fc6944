#include "eventkit/icalendar/TimeZoneText.h"

#include "eventkit/icalendar/DateValue.h"

#include <gtest/gtest.h>

namespace kestrant::icalendar {
namespace {

QByteArray definitionOf(const char* zone, int year) {
    return timeZoneDefinition(*TimeZone::named(zone), year, "\n").view().text();
}

TEST(TimeZoneTextTest, DescribesAZoneByItsYearlyChanges) {
    const QByteArray text = definitionOf("Europe/Paris", 2025);
    EXPECT_TRUE(
        text.contains("BEGIN:DAYLIGHT\nDTSTART:20250330T020000\nTZOFFSETFROM:+0100\nTZOFFSETTO:+0200\n"
                      "TZNAME:CEST\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=-1SU\nEND:DAYLIGHT\n"));
    EXPECT_TRUE(
        text.contains("BEGIN:STANDARD\nDTSTART:20251026T030000\nTZOFFSETFROM:+0200\nTZOFFSETTO:+0100\n"
                      "TZNAME:CET\nRRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU\nEND:STANDARD\n"));
    EXPECT_TRUE(definitionOf("America/New_York", 2025).contains("BYMONTH=3;BYDAY=2SU"));
    EXPECT_TRUE(definitionOf("Asia/Kolkata", 2025)
                    .contains("DTSTART:19700101T000000\nTZOFFSETFROM:+0530\nTZOFFSETTO:+0530\n"));
}

QByteArray part(const char* kind, const char* start, const char* from, const char* to,
                const QByteArray& rest = {}) {
    return "BEGIN:" + QByteArray(kind) + "\nDTSTART:" + start + "\nTZOFFSETFROM:" + from +
           "\nTZOFFSETTO:" + to + "\n" + rest + "END:" + kind + "\n";
}

QByteArray rule(const char* text) {
    return "RRULE:" + QByteArray(text) + "\n";
}

Document withDefinition(const QByteArray& name, const QByteArray& parts) {
    return *Document::parse("BEGIN:VCALENDAR\nBEGIN:VTIMEZONE\nTZID:" + name + "\n" + parts +
                            "END:VTIMEZONE\nEND:VCALENDAR\n");
}

/// The instant of a local time in a zone that a file defines; "unknown" where it says nothing.
QString instantIn(const Document& document, const QByteArray& name, const QByteArray& local) {
    const auto zone = zoneNamed(name, document);
    const auto date = readLocalDate(local);
    return zone ? toIso8601(zone->instantAt(date->date(), date->time())) : QStringLiteral("unknown");
}

TEST(DefinedZoneTest, GoesByTheDefinitionsOwnRulesInEveryYear) {
    const QByteArray european =
        part("STANDARD", "16011028T030000", "+0200", "+0100", rule("FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10")) +
        part("DAYLIGHT", "16010325T020000", "+0100", "+0200", rule("FREQ=YEARLY;BYDAY=-1SU;BYMONTH=3"));
    const QByteArray american =
        part("DAYLIGHT", "19870405T020000", "-0800", "-0700",
             rule("FREQ=YEARLY;BYMONTH=4;BYDAY=1SU;UNTIL=20060402T100000Z")) +
        part("STANDARD", "19671029T020000", "-0700", "-0800",
             rule("FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU;UNTIL=20061029T090000Z")) +
        part("DAYLIGHT", "20070311T020000", "-0800", "-0700", rule("FREQ=YEARLY;BYMONTH=3;BYDAY=2SU")) +
        part("STANDARD", "20071104T020000", "-0700", "-0800",
             rule("FREQ=YEARLY;BYMONTH=11;BYDAY=SU;BYMONTHDAY=1,2,3,4,5,6,7"));
    const QByteArray own =
        part("STANDARD", "20000601T000000", "+0230", "+0200", rule("FREQ=YEARLY;INTERVAL=2")) +
        part("DAYLIGHT", "20000501T000000", "+0200", "+0230", rule("FREQ=MONTHLY;INTERVAL=24;BYMONTHDAY=1"));
    const QByteArray dated = part("DAYLIGHT", "20250309T020000", "-0500", "-0400",
                                  "RDATE:20260308T020000,20270314T020000\nRDATE:20280312T020000\n") +
                             part("STANDARD", "20251102T020000", "-0400", "-0500", "RDATE:20261101T020000\n");
    const QByteArray counted =
        part("STANDARD", "20201025T030000", "+0200", "+0100", rule("FREQ=YEARLY;BYDAY=-1SU;BYMONTH=10")) +
        part("DAYLIGHT", "20200329T020000", "+0100", "+0200",
             rule("FREQ=YEARLY;BYDAY=SU;BYMONTH=3;BYSETPOS=-1;COUNT=6"));
    const QByteArray exact = part("STANDARD", "18930401T000000", "+005328", "+005328");
    struct Case {
        const char* what;
        QByteArray parts;
        const char* local;
        const char* instant;
    };
    const Case cases[] = {
        {"before all", european, "15000101T000000", "1499-12-31T23:00:00Z"},
        {"a summer long ago", european, "19650701T120000", "1965-07-01T10:00:00Z"},
        {"the gap", european, "20260329T023000", "2026-03-29T01:30:00Z"},
        {"the first of two", european, "20261025T023000", "2026-10-25T00:30:00Z"},
        {"far summer", european, "29990630T120000", "2999-06-30T10:00:00Z"},
        {"far winter", european, "99991231T120000", "9999-12-31T11:00:00Z"},
        {"a far gap", european, "21000328T023000", "2100-03-28T01:30:00Z"},
        {"by the old rules", american, "20060315T100000", "2006-03-15T18:00:00Z"},
        {"the last of the old", american, "20061028T100000", "2006-10-28T17:00:00Z"},
        {"by the new rules", american, "20260315T100000", "2026-03-15T17:00:00Z"},
        {"after the first Sunday", american, "20261102T100000", "2026-11-02T18:00:00Z"},
        {"every second year", own, "20020510T000000", "2002-05-09T21:30:00Z"},
        {"every other", own, "20030510T000000", "2003-05-09T22:00:00Z"},
        {"by dates", dated, "20260701T000000", "2026-07-01T04:00:00Z"},
        {"after the last date", dated, "20400101T000000", "2040-01-01T04:00:00Z"},
        {"the last that counts", counted, "20250701T000000", "2025-06-30T22:00:00Z"},
        {"one too many", counted, "20260701T000000", "2026-06-30T23:00:00Z"},
        {"to the second", exact, "20260101T000000", "2025-12-31T23:06:32Z"},
        {"colons", part("STANDARD", "19700101T000000", "+05:45", "+05:45"), "20260101T000000",
         "2025-12-31T18:15:00Z"},
        {"by itself",
         part("STANDARD", "x", "+0100", "+0100").replace("DTSTART:x", "DTSTART;TZID=Office:20000101T000000"),
         "20260701T120000", "2026-07-01T11:00:00Z"},
        {"with an unreadable part", part("STANDARD", "20000101T000000", "one", "two") + exact,
         "20260101T000000", "2025-12-31T23:06:32Z"},
        {"its place, where it makes no sense", "X-LIC-LOCATION:Asia/Tokyo\n", "20260101T090000",
         "2026-01-01T00:00:00Z"},
        {"nonsense", part("STANDARD", "x", "one", "two"), "20260101T090000", "unknown"},
        {"nothing", "", "20260101T090000", "unknown"},
    };
    for (const Case& each : cases)
        EXPECT_EQ(instantIn(withDefinition("Office", each.parts), "Office", each.local), each.instant)
            << each.what;
}

TEST(DefinedZoneTest, CountsLessThanAKnownName) {
    const QByteArray wrong = part("STANDARD", "19700101T000000", "+1100", "+1100");
    for (const char* name : {"Europe/Berlin", "/vendor.example/Europe/Berlin", "W. Europe Standard Time",
                             "/vendor.example/20260101_1/Europe/Berlin", "MET"})
        EXPECT_EQ(instantIn(withDefinition(name, wrong), name, "20260701T120000"), "2026-07-01T10:00:00Z")
            << name;
    // What only ends like a name, or could be a rule, is none.
    for (const char* name : {"Company/Europe/Berlin", "Office5", "CET-1CEST", "UTC+02:00"})
        EXPECT_EQ(instantIn(withDefinition(name, wrong), name, "20260701T120000"), "2026-07-01T01:00:00Z")
            << name;
    EXPECT_EQ(instantIn(Document::make(), "Company/Europe/Berlin", "20260701T120000"),
              "2026-07-01T10:00:00Z");
    for (const char* name : {"Here, there", "Here\\, there", " Here, there "})
        EXPECT_EQ(instantIn(withDefinition("Here\\, there", wrong), name, "20260701T120000"),
                  "2026-07-01T01:00:00Z")
            << name;
}

TEST(DefinedZoneTest, CostsLittleWhateverTheDefinitionSays) {
    QByteArray full = "FREQ=YEARLY;BYMONTH=1,2,3,4,5,6,7,8,9,10,11,12;BYMONTHDAY=1";
    for (int day = 2; day <= 31; ++day)
        full += ',' + QByteArray::number(day);
    QByteArray manyDates = "RDATE:20200101T000000";
    for (int i = 0; i < 2000; ++i)
        manyDates += ",20200101T" + QByteArray::number(100'000 + i % 60);
    const auto ruled = [](const QByteArray& text) {
        return part("STANDARD", "20200101T000000", "+0300", "+0200", rule(text.constData()));
    };
    struct Case {
        const char* what;
        QByteArray parts;
        const char* instant;
    };
    const Case cases[] = {
        {"every second", ruled("FREQ=SECONDLY"), "2026-07-01T10:00:00Z"},
        {"every day", ruled("FREQ=DAILY;COUNT=2147483647"), "2026-07-01T10:00:00Z"},
        {"counted for ever", ruled("FREQ=YEARLY;COUNT=2147483647"), "2026-07-01T10:00:00Z"},
        {"every day of the year", ruled(full), "2026-07-01T10:00:00Z"},
        {"all times of day", ruled(full + ";BYHOUR=1,2,3;BYMINUTE=1,2,3;BYSECOND=1,2,3"),
         "2026-07-01T10:00:00Z"},
        {"never", ruled("FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=30"), "2026-07-01T10:00:00Z"},
        {"many that never are", ruled("FREQ=MONTHLY;BYMONTHDAY=31;BYMONTH=2").repeated(400),
         "2026-07-01T10:00:00Z"},
        {"many parts", part("STANDARD", "20200101T000000", "+0300", "+0200").repeated(600),
         "2026-07-01T10:00:00Z"},
        {"many dates", part("STANDARD", "20200101T000000", "+0300", "+0200", manyDates + "\n"),
         "2026-07-01T10:00:00Z"},
        {"monthly for ever", ruled("FREQ=MONTHLY"), "2026-07-01T10:00:00Z"},
        {"beside one that makes sense",
         ruled("FREQ=YEARLY;BYDAY=MO,TU,WE") +
             part("DAYLIGHT", "20200401T000000", "+0200", "+0300", rule("FREQ=YEARLY;BYMONTH=4;BYDAY=1SU")),
         "2026-07-01T09:00:00Z"},
        {"in the year 9999", part("STANDARD", "20200101T000000", "+0300", "+0200", "RDATE:99990101T000000\n"),
         "2026-07-01T10:00:00Z"},
        {"too long", part("STANDARD", "20200101T000000", "+0300", "+0200").repeated(1000), "unknown"},
    };
    for (const Case& each : cases) {
        const Document document = withDefinition("Office", each.parts);
        EXPECT_EQ(instantIn(document, "Office", "20260701T120000"), each.instant) << each.what;
        if (const auto zone = zoneNamed("Office", document)) {
            const Instant start;
            EXPECT_LE(zone->changesBetween(start, start + std::chrono::hours(24 * 365 * 200)).size(), 500U);
        }
    }
}

TEST(DefinedZoneTest, KeepsItsNameAndGoesAlongWhereItIsNotDefined) {
    const Document document = withDefinition("Office", part("STANDARD", "19700101T000000", "+0545", "+0545"));
    Property property = Property::parse("DTSTART;TZID=Office:20260327T090000");
    const auto date = readDate(property, document);
    ASSERT_TRUE(date.has_value());
    writeDate(property, DateComponents::fromDateTime({2026, 4, 1}, {9, 0}, date->timeZone), document);
    EXPECT_EQ(property.toContent(), "DTSTART;TZID=Office:20260401T090000");

    Document other = Document::make();
    Component event("VEVENT", other.lineEnd().toByteArray());
    event.append(property, other.lineEnd());
    other.add(event);
    addMissingTimeZones(other, Document::make(), 2026, {std::nullopt, date->timeZone});
    EXPECT_EQ(instantIn(other, "Office", "20260327T090000"), "2026-03-27T03:15:00Z");
}

}  // namespace
}  // namespace kestrant::icalendar
