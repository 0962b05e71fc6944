#include "foundation/TimeZone.h"

#include "foundation/ZoneFile.h"
#include "support/ProcessZone.h"

#include <QDirIterator>
#include <QFile>

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::sys_days firstDay = std::chrono::year(1950) / 1 / 1;
constexpr std::chrono::sys_days lastDay = std::chrono::year(2100) / 1 / 1;

/// All names that lead to zone data, under whatever folder they are.
QByteArrayList namesInZoneData() {
    QByteArrayList result;
    for (const QString& folder : zoneFolders()) {
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            const QString path = files.next();
            QFile file(path);
            const QString name = path.mid(folder.size() + 1);
            const bool isMachines = name == u"localtime" || name == u"posixrules";
            if (!isMachines && !name.startsWith(u"right/") && file.open(QIODevice::ReadOnly) &&
                file.read(4) == "TZif")
                result.append(name.toLatin1());
        }
    }
    return result;
}

TEST(NamedZones, AreAllThatTheSystemHasAndTellTheTimeAsTheCLibraryDoes) {
    const QByteArrayList names = namesInZoneData();
    ASSERT_GT(names.size(), 400);
    for (const QByteArray& name : names) {
        const auto zone = TimeZone::named(name);
        ASSERT_TRUE(zone.has_value()) << name.toStdString();
        const ProcessZone process(name);
        for (Instant instant = firstDay; instant < lastDay; instant += 401h) {
            ASSERT_EQ(zone->offsetAt(instant).count(),
                      ProcessZone::offsetAt(
                          std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count()))
                << name.toStdString() << ' ' << toIso8601(instant).toStdString();
        }
    }
}

TEST(NamedZones, AreKnownByTheNameTheyAreFoundUnder) {
    struct Case {
        QByteArray name;
        std::optional<QByteArray> id;
    };
    for (const Case& each : {Case{"US/Pacific", "US/Pacific"},
                             Case{"GMT", "GMT"},
                             Case{"UTC", "UTC"},
                             Case{"utc", "UTC"},
                             Case{"Z", "UTC"},
                             Case{"UTC+05:30", "UTC+05:30"},
                             Case{"right/Asia/Tokyo", "Asia/Tokyo"},
                             Case{"Romance Standard Time", "Europe/Paris"},
                             Case{"Pacific Standard Time", "America/Los_Angeles"},
                             Case{"", {}},
                             Case{"localtime", {}},
                             Case{"zone.tab", {}},
                             Case{"Europe", {}},
                             Case{"Europe/", {}},
                             Case{"../../../etc/localtime", {}},
                             Case{"/usr/share/zoneinfo/Europe/Paris", {}},
                             Case{"Office5", {}},
                             Case{"CET-1CEST", {}},
                             Case{"UTC+24:00", {}},
                             Case{"UTC+", {}},
                             Case{"Middle/Earth", {}},
                             Case{QByteArray(100'000, '/'), {}}}) {
        const auto zone = TimeZone::named(each.name);
        EXPECT_EQ(zone ? std::optional(zone->id()) : std::nullopt, each.id)
            << each.name.left(50).toStdString();
    }
    EXPECT_EQ(TimeZone::named("UTC-03:30")->offsetAt({}), -3h - 30min);
    EXPECT_TRUE(TimeZone::named("utc")->isUtc());
    EXPECT_FALSE(TimeZone::named("Etc/UTC")->isUtc());
}

TEST(ZoneFiles, ThatAreDamagedAreNoZones) {
    QFile file(zoneFolders().constFirst() + QStringLiteral("/Europe/Paris"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray whole = file.readAll();
    ASSERT_TRUE(parseZoneFile(whole).has_value());
    const qsizetype footer = ruleInZoneFile(whole).size() + 2;
    EXPECT_EQ(ruleInZoneFile(whole), "CET-1CEST,M3.5.0,M10.5.0/3");
    for (qsizetype size = 0; size < whole.size() - footer; ++size)
        ASSERT_FALSE(parseZoneFile(whole.first(size)).has_value()) << size;
    for (qsizetype at = 0; at < whole.size(); ++at) {
        QByteArray damaged = whole;
        damaged[at] = static_cast<char>(~damaged[at]);
        // Whatever it is, it is read without harm, and no clock shows what no clock can.
        const auto zone = parseZoneFile(damaged);
        const auto isPossible = [](const ZoneChange& change) {
            // A name with other characters could break the line of a calendar file that it is written to.
            return std::abs(change.offset) < 26 * 3600 &&
                   std::ranges::all_of(change.abbreviation,
                                       [](char c) { return isalnum(c) || c == '+' || c == '-'; });
        };
        ASSERT_TRUE(!zone || (isPossible(zone->before) &&
                              std::all_of(zone->changes.begin(), zone->changes.end(), isPossible)))
            << at;
    }
}

TEST(DefinedZones, AreOneAnothersEqualByWhatTheyAre) {
    const ZoneChanges changes{.before = {.offset = 3600}, .changes = {{.at = 1000, .offset = 7200}}};
    EXPECT_EQ(TimeZone::defined("Office", changes), TimeZone::defined("Office", changes));
    EXPECT_NE(TimeZone::defined("Office", changes), TimeZone::defined("Home", changes));
    EXPECT_NE(TimeZone::defined("Office", changes), TimeZone::defined("Office", {}));
    EXPECT_FALSE(TimeZone::defined("Office", changes).isNamed());
}

TEST(DefinedZones, GoBackToLocalTimesThatWereSkippedAMomentAgo) {
    const TimeZone zone =
        TimeZone::defined("Office", {.changes = {{.at = 1000, .offset = 7200}, {.at = 1600}}});
    using std::chrono::seconds;
    for (const GapPolicy policy : {GapPolicy::keepOffset, GapPolicy::nextExisting})
        EXPECT_EQ(zone.instantAt(seconds(1700), policy), Instant(seconds(1700)));
    EXPECT_EQ(zone.instantAt(seconds(1200), GapPolicy::nextExisting), Instant(seconds(1000)));
    EXPECT_EQ(zone.instantAt(seconds(8300), GapPolicy::keepOffset), Instant(seconds(1100)));
}

}  // namespace
}  // namespace kestrant
