#include "platform/linux/desktop/AutostartEntry.h"

#include "foundation/UserDefaults.h"
#include "preferences/PreferenceKeys.h"
#include "support/MemoryUserDefaults.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace kestrant {
namespace {

const QString name = QStringLiteral("kestrant.desktop");

class AutostartEntryTest : public testing::Test {
  protected:
    [[nodiscard]] AutostartEntry entry(const QString& program = QStringLiteral("/usr/bin/kestrant")) const {
        return {name, own(), {system()}, program};
    }
    [[nodiscard]] QString own() const { return folder_.path() + QStringLiteral("/config/autostart"); }
    [[nodiscard]] QString system() const { return folder_.path() + QStringLiteral("/etc/autostart"); }

    static void write(const QString& folder, const QByteArray& text) {
        ASSERT_TRUE(QDir().mkpath(folder));
        QFile file(folder + u'/' + name);
        ASSERT_TRUE(file.open(QFile::WriteOnly));
        file.write(text);
    }
    [[nodiscard]] QByteArray text() const {
        QFile file(own() + u'/' + name);
        return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder_;
};

TEST_F(AutostartEntryTest, IsWrittenIntoAFolderThatWasMissingAndHiddenAgain) {
    AutostartEntry item = entry();
    EXPECT_FALSE(item.isEnabled());
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    EXPECT_EQ(text(), "[Desktop Entry]\nType=Application\nName=Kestrant\nIcon=com.kestrant.notchapp\n"
                      "Exec=\"/usr/bin/kestrant\"\nTryExec=/usr/bin/kestrant\nTerminal=false\n");
    ASSERT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(AutostartEntryTest, QuotesAPathSoThatItStaysOneArgument) {
    ASSERT_TRUE(entry(QStringLiteral("/opt/my $apps/100%/\"k\\t`")).setEnabled(true));
    EXPECT_TRUE(text().contains("\nExec=\"/opt/my \\\\$apps/100%%/\\\\\"k\\\\\\\\t\\\\`\"\n"))
        << text().constData();
}

TEST_F(AutostartEntryTest, AddsNoLinesForAPathThatHasSome) {
    ASSERT_TRUE(entry(QStringLiteral("/opt/a\nHidden=true\n/k")).setEnabled(true));
    EXPECT_TRUE(text().contains("\nExec=\"/opt/a\\nHidden=true\\n/k\"\nTryExec=/opt/a\\nHidden=true\\n/k\n"))
        << text().constData();
}

TEST_F(AutostartEntryTest, ReadsWhatAnybodyLeftThere) {
    const struct {
        const char* text;
        bool enabled;
    } cases[] = {
        {"[Desktop Entry]\nExec=kestrant\n", true},
        {"[Desktop Entry]\nExec=kestrant\nHidden=true\n", false},
        {"[Desktop Entry]\r\nExec=kestrant\r\n", true},
        {"[Desktop Entry]\nExec=kestrant\nHidden = true \n", false},
        {"[Desktop Entry]\nExec=kestrant\nX-GNOME-Autostart-enabled=false\n", false},
        {"[Desktop Entry]\nExec=kestrant\n[Desktop Action x]\nHidden=true\n", true},
        {"", false},
        {"\x01\x02 not an entry", false},
    };
    for (const auto& [text, enabled] : cases) {
        write(own(), text);
        EXPECT_EQ(entry().isEnabled(), enabled) << text;
    }
}

TEST_F(AutostartEntryTest, KeepsWhatAPersonChangedInTheEntry) {
    write(
        own(),
        "# mine\n[Desktop Entry]\nExec=env LANG=fr_FR kestrant\nX-GNOME-Autostart-enabled=false\nX-Mine=1\n");
    ASSERT_TRUE(entry().setEnabled(true));
    EXPECT_EQ(text(), "# mine\n[Desktop Entry]\nExec=env LANG=fr_FR kestrant\nX-Mine=1\n");
    ASSERT_TRUE(entry().setEnabled(false));
    EXPECT_EQ(text(), "# mine\n[Desktop Entry]\nHidden=true\nExec=env LANG=fr_FR kestrant\nX-Mine=1\n");
}

TEST_F(AutostartEntryTest, OverridesTheEntryOfTheSystem) {
    write(system(), "[Desktop Entry]\nExec=kestrant\n");
    AutostartEntry item = entry();
    EXPECT_TRUE(item.isEnabled());
    ASSERT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(QFile::exists(system() + u'/' + name));
}

TEST_F(AutostartEntryTest, SetsAFileAsideThatIsNoEntry) {
    write(own(), "precious notes");
    ASSERT_TRUE(entry().setEnabled(true));
    EXPECT_TRUE(entry().isEnabled());
    QFile aside(own() + u'/' + name + QStringLiteral(".damaged-1"));
    ASSERT_TRUE(aside.open(QFile::ReadOnly));
    EXPECT_EQ(aside.readAll(), "precious notes");
}

TEST_F(AutostartEntryTest, SaysWhenTheFolderCannotBeMade) {
    QFile inTheWay(folder_.path() + QStringLiteral("/config"));
    ASSERT_TRUE(inTheWay.open(QFile::WriteOnly));
    AutostartEntry item = entry();
    const auto result = item.setEnabled(true);
    ASSERT_FALSE(result);
    EXPECT_TRUE(result.error().english.contains(folder_.path())) << qPrintable(result.error().english);
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(AutostartEntryTest, IsMirroredInThePreferencesByTheManager) {
    AutostartEntry item = entry();
    MemoryUserDefaults defaults;
    LaunchAtLoginManager manager(item, defaults);
    int changes = 0;
    QObject::connect(&manager, &LaunchAtLoginManager::isEnabledChanged, [&changes] { ++changes; });

    manager.refresh();
    EXPECT_FALSE(defaults.boolean(preferenceKeys::launchAtLogin).has_value());
    ASSERT_TRUE(manager.setEnabled(true));
    EXPECT_TRUE(manager.isEnabled());
    EXPECT_EQ(defaults.boolean(preferenceKeys::launchAtLogin), true);

    ASSERT_TRUE(QFile::remove(own() + u'/' + name));
    manager.refresh();
    EXPECT_FALSE(manager.isEnabled());
    EXPECT_EQ(defaults.boolean(preferenceKeys::launchAtLogin), false);
    EXPECT_EQ(changes, 2);
}

}  // namespace
}  // namespace kestrant
