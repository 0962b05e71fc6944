#include "foundation/CurrentCalendars.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace kestrant {
namespace {

class SystemCurrentCalendarTest : public testing::Test {
  protected:
    SystemCurrentCalendarTest() { qputenv("TZ", "Europe/Paris"); }
    ~SystemCurrentCalendarTest() override { qputenv("TZ", zoneBefore); }

    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QByteArray zoneBefore = qgetenv("TZ");
    QTemporaryDir settings;
};

TEST_F(SystemCurrentCalendarTest, TellsOnceAfterTheZoneHasChanged) {
    SystemCurrentCalendar current(settings.path());
    int told = 0;
    const Subscription subscription = current.observeChanges([&] {
        ++told;
        EXPECT_EQ(current.calendar().zone().id(), "Asia/Tokyo");
    });
    EXPECT_EQ(current.calendar().zone().id(), "Europe/Paris");
    current.refresh();
    EXPECT_EQ(told, 0);
    qputenv("TZ", "Asia/Tokyo");
    current.refresh();
    current.refresh();
    EXPECT_EQ(told, 1);
}

TEST_F(SystemCurrentCalendarTest, LooksAgainWhenTheSettingsFilesChange) {
    QEventLoop loop;
    SystemCurrentCalendar current(settings.path());
    const Subscription subscription = current.observeChanges([&] { loop.quit(); });

    const QString zoneFile = settings.filePath(QStringLiteral("timezone"));
    for (const char* zone : {"Asia/Tokyo", "America/Sao_Paulo", "Europe/Paris"}) {
        qputenv("TZ", zone);
        QFile file(zoneFile);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(zone);
        file.close();
        loop.exec();
        EXPECT_EQ(current.calendar().zone().id(), zone);
    }
}

}  // namespace
}  // namespace kestrant
