#include "foundation/Instant.h"

#include <gmock/gmock.h>

#include <limits>
#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

Instant microsecondsAfter1970(qint64 value) {
    return Instant(Duration(value));
}

TEST(Iso8601, ReadsADateTimeWithItsDistanceFromUtc) {
    const std::pair<const char*, qint64> cases[] = {
        {"2026-03-27T13:30:00Z", 1'774'618'200'000'000},
        {"2026-03-27T14:30:00+01:00", 1'774'618'200'000'000},
        {"2026-03-27T08:00:00-0530", 1'774'618'200'000'000},
        {"2026-03-27T15:30+02", 1'774'618'200'000'000},
        {"2026-03-27t13:30:00z", 1'774'618'200'000'000},
        {"2026-03-27T13:30:00.25Z", 1'774'618'200'250'000},
        {"2026-03-27T13:30:00,0000019Z", 1'774'618'200'000'001},
        {"1969-12-31T23:59:59.5Z", -500'000},
        {"2016-12-31T23:59:60Z", 1'483'228'800'000'000},
        {"0001-01-01T00:00:00Z", -62'135'596'800'000'000},
        {"9999-12-31T23:59:59Z", 253'402'300'799'000'000},
    };
    for (const auto& [text, microseconds] : cases)
        EXPECT_EQ(parseIso8601(QLatin1String(text).toString()), microsecondsAfter1970(microseconds)) << text;
}

TEST(Iso8601, RefusesEverythingElse) {
    for (const char* text : {"",
                             "Z",
                             "2026-03-27",
                             "2026-03-27T14:30:00",
                             "2026-03-27 14:30:00Z",
                             "2026-02-29T00:00:00Z",
                             "2026-13-01T00:00:00Z",
                             "2026-03-27T24:00:00Z",
                             "2026-03-27T12:60:00Z",
                             "2026-03-27T12:00:61Z",
                             "2026-03-27T12:00:00.Z",
                             "2026-03-27T12Z",
                             "2026-03-27T12:00:00+1",
                             "2026-03-27T12:00:00+24:00",
                             "2026-03-27T12:00:00+01:60",
                             "2026-03-27T12:00:00+01:",
                             "2026-03-27T12:00:00ZZ",
                             "2026-03-27T12:00:00Z ",
                             " 2026-03-27T12:00:00Z",
                             "26-03-27T12:00:00Z",
                             "2026-3-27T12:00:00Z",
                             "-2026-03-27T12:00:00Z"})
        EXPECT_EQ(parseIso8601(QLatin1String(text).toString()), std::nullopt) << text;
    EXPECT_EQ(parseIso8601(u"٢٠٢٦-03-27T12:00:00Z"), std::nullopt) << "digits of another script";
}

TEST(Iso8601, WritesWholeSecondsInUtc) {
    EXPECT_EQ(toIso8601(microsecondsAfter1970(1'774'618'200'000'000)), "2026-03-27T13:30:00Z");
    EXPECT_EQ(toIso8601(microsecondsAfter1970(-1)), "1969-12-31T23:59:59Z");
    EXPECT_EQ(toIso8601(microsecondsAfter1970(-62'135'596'800'000'001)), "0000-12-31T23:59:59Z");
    EXPECT_EQ(toIso8601(microsecondsAfter1970(253'402'300'800'000'000)), "+10000-01-01T00:00:00Z");
    EXPECT_EQ(toIso8601(microsecondsAfter1970(-62'167'219'200'000'001)), "-0001-12-31T23:59:59Z");
}

TEST(ReferenceSeconds, CountFrom2001AndKeepEveryMicrosecond) {
    EXPECT_EQ(instantFromSecondsSinceReferenceDate(0), parseIso8601(u"2001-01-01T00:00:00Z"));
    for (const qint64 value : {0LL, 1LL, -1LL, 1'774'618'200'123'457LL, -62'135'596'800'000'000LL}) {
        const Instant instant = microsecondsAfter1970(value);
        EXPECT_EQ(instantFromSecondsSinceReferenceDate(secondsSinceReferenceDate(instant)), instant) << value;
        EXPECT_EQ(instantFromSecondsSince1970(secondsSince1970(instant)), instant) << value;
    }
}

TEST(Seconds, AreRoundedAndNeverOverflow) {
    EXPECT_EQ(seconds(0.3), 300ms);
    EXPECT_EQ(seconds(-0.0000006), -1us);
    EXPECT_EQ(seconds(std::numeric_limits<double>::quiet_NaN()), 0s);
    EXPECT_GT(seconds(std::numeric_limits<double>::infinity()), 24h * 365 * 10000);
    EXPECT_LT(seconds(-1e300), -24h * 365 * 10000);
}

}  // namespace
}  // namespace kestrant
