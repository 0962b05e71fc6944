#include "foundation/SystemTimeZone.h"

#include "support/ProcessZone.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <utility>

namespace kestrant {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::sys_days firstDay = std::chrono::year(1975) / 1 / 1;
constexpr std::chrono::sys_days lastDay = std::chrono::year(2060) / 1 / 1;

TEST(TheZoneOfTheProcess, IsWhatTheCLibraryTakesTZFor) {
    const std::pair<QByteArray, const char*> cases[] = {
        {"Europe/Paris", "Europe/Paris"},
        {":Europe/Paris", "Europe/Paris"},
        {"US/Pacific", "US/Pacific"},
        {"posix/Asia/Tokyo", "Asia/Tokyo"},
        {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
        {":/usr/share/zoneinfo/Asia/Kolkata", "Asia/Kolkata"},
        {"../zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
        {"/usr/share/zoneinfo/nowhere", "UTC"},
        {"", "UTC"},
        {":", "UTC"},
        {"::", "UTC"},
        {"Middle/Earth", "UTC"},
        {"zone.tab", "UTC"},
        {"JST-9", "JST-9"},
        {":JST-9", "JST-9"},
        {"EST5EDT", "EST5EDT"},
        {"CET-1CEST,M3.5.0,M10.5.0/3", "CET-1CEST,M3.5.0,M10.5.0/3"},
        {"<+0530>-5:30", "<+0530>-5:30"},
        {"<-03>3<-02>,M3.5.0/-2,M10.5.0/-1", "<-03>3<-02>,M3.5.0/-2,M10.5.0/-1"},
        {"NZST-12NZDT,M9.5.0,M4.1.0/3", "NZST-12NZDT,M9.5.0,M4.1.0/3"},
        {"AAA3BBB2,J60/0,J300", "AAA3BBB2,J60/0,J300"},
        {"AAA3BBB2,59/0,299/1:30:15", "AAA3BBB2,59/0,299/1:30:15"},
        {"IST-1GMT0,M10.5.0,M3.5.0/1", "IST-1GMT0,M10.5.0,M3.5.0/1"},
        {"AAA+12:34:56", "AAA+12:34:56"},
        {"AAA-1 ", "AAA-1 "},
        {"AA3", "UTC"},
        {"CEST", "UTC"},
        {"3", "UTC"},
    };
    for (const auto& [text, id] : cases) {
        const ProcessZone process(text);
        const TimeZone zone = systemTimeZone(QStringLiteral("/etc"));
        EXPECT_EQ(zone.id(), id) << text.toStdString();
        for (Instant instant = firstDay; instant < lastDay; instant += 101h) {
            ASSERT_EQ(zone.offsetAt(instant).count(),
                      ProcessZone::offsetAt(
                          std::chrono::floor<std::chrono::seconds>(instant).time_since_epoch().count()))
                << text.toStdString() << ' ' << toIso8601(instant).toStdString();
        }
    }
}

TEST(TheZoneOfTheProcess, GoesByTheRulesOfTZ) {
    struct Case {
        QByteArray text;
        const char* instant;
        std::chrono::seconds offset;
    };
    for (const Case& each :
         {Case{"IST-2IDT,M3.4.4/26,M10.5.0", "2026-03-26T23:59:59Z", 2h},
          Case{"IST-2IDT,M3.4.4/26,M10.5.0", "2026-03-27T00:00:00Z", 3h},
          Case{"XYZ4UVW", "2026-03-08T05:59:59Z", -4h}, Case{"XYZ4UVW", "2026-03-08T06:00:00Z", -3h},
          Case{"EST5EDT4,0/0,J365/25", "2026-01-01T12:00:00Z", -4h},
          Case{"EST5EDT4,0/0,J365/25", "2026-12-31T12:00:00Z", -4h}}) {
        const ProcessZone process(each.text);
        EXPECT_EQ(
            systemTimeZone(QStringLiteral("/etc")).offsetAt(*parseIso8601(QString::fromLatin1(each.instant))),
            each.offset)
            << each.text.toStdString() << ' ' << each.instant;
    }
}

TEST(TheZoneOfTheMachine, IsThatOfItsSettings) {
    const ProcessZone process(std::nullopt);
    const QString data = QStringLiteral("/usr/share/zoneinfo/");
    QTemporaryDir folder;
    const QString localtime = folder.filePath(QStringLiteral("localtime"));
    const auto zone = [&] { return systemTimeZone(folder.path()).id(); };
    const auto linkTo = [&](const QString& target) {
        QFile::remove(localtime);
        ASSERT_TRUE(QFile::link(target, localtime));
    };
    const auto write = [&](const QString& name, const QByteArray& content) {
        QFile::remove(folder.filePath(name));
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    };
    EXPECT_EQ(zone(), "UTC");
    linkTo(data + QStringLiteral("US/Pacific"));
    EXPECT_EQ(zone(), "US/Pacific");
    ASSERT_TRUE(QFile::link(data + QStringLiteral("Asia/Tokyo"), folder.filePath(QStringLiteral("other"))));
    linkTo(QStringLiteral("other"));
    EXPECT_EQ(zone(), "Asia/Tokyo");
    linkTo(QStringLiteral("localtime"));
    EXPECT_EQ(zone(), "UTC");
    write(QStringLiteral("localtime"), "no zone");
    EXPECT_EQ(zone(), "UTC");
    // A copy is known by what the settings call it, else by its content.
    QFile::remove(localtime);
    ASSERT_TRUE(QFile::copy(data + QStringLiteral("Asia/Tokyo"), localtime));
    EXPECT_THAT(zone(), testing::AnyOf("Asia/Tokyo", "Japan"));
    write(QStringLiteral("timezone"), "Japan\n");
    EXPECT_EQ(zone(), "Japan");
    write(QStringLiteral("timezone"), "Europe/Paris\n");
    EXPECT_THAT(zone(), testing::AnyOf("Asia/Tokyo", "Japan"));
    // Zone data that the system does not have goes by its own rule.
    QFile own(data + QStringLiteral("Asia/Tokyo"));
    ASSERT_TRUE(own.open(QIODevice::ReadOnly));
    write(QStringLiteral("localtime"), own.readAll().replace("JST-9", "JST-8"));
    EXPECT_EQ(zone(), "JST-8");
}

class SystemTimeZoneTest : public testing::Test {
  protected:
    SystemTimeZoneTest() { qputenv("TZ", "Europe/Paris"); }
    ~SystemTimeZoneTest() override { qputenv("TZ", zoneBefore); }

    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QByteArray zoneBefore = qgetenv("TZ");
    QTemporaryDir settings;
};

TEST_F(SystemTimeZoneTest, TellsOnceAfterTheZoneHasChanged) {
    SystemTimeZone current(settings.path());
    int told = 0;
    const Subscription subscription = current.observeChanges([&] {
        ++told;
        EXPECT_EQ(current.zone().id(), "Asia/Tokyo");
    });
    EXPECT_EQ(current.zone().id(), "Europe/Paris");
    current.refresh();
    EXPECT_EQ(told, 0);
    qputenv("TZ", "Asia/Tokyo");
    current.refresh();
    current.refresh();
    EXPECT_EQ(told, 1);
}

TEST_F(SystemTimeZoneTest, LooksAgainWhenTheSettingsFilesChange) {
    QEventLoop loop;
    SystemTimeZone current(settings.path());
    const Subscription subscription = current.observeChanges([&] { loop.quit(); });

    const QString zoneFile = settings.filePath(QStringLiteral("timezone"));
    for (const char* zone : {"Asia/Tokyo", "America/Sao_Paulo", "Europe/Paris"}) {
        qputenv("TZ", zone);
        QFile file(zoneFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(zone);
        file.close();
        loop.exec();
        EXPECT_EQ(current.zone().id(), zone);
    }
}

}  // namespace
}  // namespace kestrant
