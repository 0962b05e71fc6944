#include "metrics/ReportMessages.h"
#include "metrics/ReportSchedule.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kestrant::metrics {

namespace {

const Instant noon = *parseIso8601(u"2026-03-27T12:00:00Z");

}  // namespace

TEST(ReportSchedule, DaysAreThoseOfUtc) {
    for (const auto& [moment, day] :
         {std::pair("2026-03-27T00:00:00Z", "2026-03-27"), std::pair("2026-03-27T23:59:59Z", "2026-03-27"),
          std::pair("2026-03-28T00:30:00+01:00", "2026-03-27"),
          std::pair("2024-02-29T12:00:00Z", "2024-02-29"), std::pair("1969-12-31T23:00:00Z", "1969-12-31")}) {
        const auto instant = parseIso8601(QString(moment));
        ASSERT_TRUE(instant);
        const auto start = secondsSince1970(*parseIso8601(QString(day) + "T00:00:00Z"));
        EXPECT_EQ(dayStamp(*instant), (DayStamp{day, start})) << moment;
        EXPECT_EQ(expiryCutoff(*instant), start - 7776000);
    }
}

TEST(ReportSchedule, TheDelayDoublesWithEachFailureUpToTwelveHours) {
    const double now = secondsSince1970(noon);
    for (const auto& [failures, delay] :
         {std::pair(0, 600), std::pair(1, 1200), std::pair(2, 2400), std::pair(6, 38400), std::pair(7, 43200),
          std::pair(8, 43200), std::pair(29, 43200)}) {
        EXPECT_EQ(backoff(failures, noon, 0.5, {}), (Backoff{failures + 1, now + delay}));
        EXPECT_NEAR(backoff(failures, noon, 0, {}).nextAttemptAt, now + 0.8 * delay, 1e-6);
        EXPECT_NEAR(backoff(failures, noon, 0.999999, {}).nextAttemptAt, now + 1.2 * delay, 1);
    }
    EXPECT_EQ(backoff(30, noon, 0.5, {}).attempts, 30);
    EXPECT_EQ(backoff(std::numeric_limits<qint64>::max(), noon, 0.5, {}).attempts, 30);
    EXPECT_EQ(backoff(0, noon, 0.5, 7200).nextAttemptAt, now + 7200);
    EXPECT_EQ(backoff(4, noon, 0.5, 60).nextAttemptAt, now + 9600) << "asked for less than is waited anyway";
}

TEST(ReportSchedule, RetryAfterIsSecondsOrADate) {
    const std::pair<const char*, std::optional<double>> cases[] = {
        {"120", 120},
        {" 120 ", 120},
        {"0", 0},
        {"1.5", 1.5},
        {"86400", 86400},
        {"86401", 86400},
        {"1e99", 86400},
        {"99999999999999999999999", 86400},
        {"-1", {}},
        {"-1e99", {}},
        {"nan", {}},
        {"inf", {}},
        {"1e999", {}},
        {"0x10", {}},
        {"12 s", {}},
        {"120, 240", {}},
        {"", {}},
        {"later", {}},
        {"Fri, 27 Mar 2026 12:30:00 GMT", 1800},
        {"Fri, 27 Mar 2026 12:00:00 GMT", 0},
        {"Thu, 01 Jan 1970 00:00:00 GMT", 0},
        {"Sat, 28 Mar 2026 18:00:00 GMT", 86400},
        {"Fri, 31 Dec 9999 23:59:59 GMT", 86400},
        {"Fri, 27 Mar 2026 12:30:00", {}},
        {"Fri, 27 Mar 2026 12:30:00 PST", {}},
        {"Fri, 32 Mar 2026 12:30:00 GMT", {}},
        {"Fri, 27 Mar 2026 25:30:00 GMT", {}},
        {"Friday, 27-Mar-26 12:30:00 GMT", 1800},
        {"Fri Mar 27 12:30:00 2026", 1800},
        {"ven., 27 mars 2026 12:30:00 GMT", {}},
        {"2026-03-27T12:30:00Z", {}},
    };
    for (const auto& [header, seconds] : cases)
        EXPECT_EQ(retryAfterSeconds(header, noon), seconds) << header;
    // The hour that Paris leaves out in spring.
    EXPECT_EQ(retryAfterSeconds("Sun, 29 Mar 2026 02:30:00 GMT", *parseIso8601(u"2026-03-29T02:00:00Z")),
              1800);
    EXPECT_EQ(retryAfterSeconds(QByteArray(100000, '9'), noon).has_value(), false);
}

TEST(ReportMessages, AnAcknowledgementMustMatchItsReportExactly) {
    const Report report{.reportID = "A-1", .count = 12, .createdDay = "2026-03-27"};
    struct Case {
        const char* body;
        bool accepted;
    };
    for (const Case& c : {
             Case{R"({"reportId":"A-1","count":12,"status":"stored"})", true},
             Case{R"({"reportId":"A-1","count":12,"status":"duplicate"})", true},
             Case{R"({"reportId":"A-1","count":12.0,"status":"stored","more":[1,{"x":null}]})", true},
             Case{R"({"reportId":"A-1","count":13,"status":"stored"})", false},
             Case{R"({"reportId":"A-2","count":12,"status":"stored"})", false},
             Case{R"({"reportId":"a-1","count":12,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":12,"status":"Stored"})", false},
             Case{R"({"reportId":"A-1","count":12,"status":"rejected"})", false},
             Case{R"({"reportId":"A-1","count":12})", false},
             Case{R"({"reportId":"A-1","status":"stored"})", false},
             Case{R"({"count":12,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":"12","status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":12.5,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":true,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":null,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":1e300,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":1e999,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":-12,"status":"stored"})", false},
             Case{R"({"reportId":1,"count":12,"status":"stored"})", false},
             Case{R"({"reportId":"A-1","count":12,"status":["stored"]})", false},
             Case{R"([{"reportId":"A-1","count":12,"status":"stored"}])", false},
             Case{R"({"reportId":"A-1","count":12,"status":"stored"} and more)", false},
             Case{R"({"reportId":"A-1","count":12,"status":"stored")", false},
             Case{"{\"reportId\":\"A-1\xff\",\"count\":12,\"status\":\"stored\"}", false},
             Case{"null", false},
             Case{"", false},
         }) {
        const auto acknowledgement = Acknowledgement::fromJson(c.body);
        EXPECT_EQ(acknowledgement && acknowledgement->isFor(report), c.accepted) << c.body;
    }
    EXPECT_FALSE(Acknowledgement::fromJson(QByteArray(60000, '[')));
}

}  // namespace kestrant::metrics
