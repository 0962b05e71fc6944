#include "ui/settings/SettingsViewModel.h"

#include "preferences/PreferenceKeys.h"
#include "services/LaunchAtLoginManager.h"
#include "ui/PanelProgram.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace kestrant;
using namespace kestrant::test;

namespace {

/// The desktop's record of the programs it starts, which may refuse changes.
class DesktopRecord : public LoginItem {
  public:
    [[nodiscard]] bool isEnabled() const override { return enabled; }
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool wanted) override {
        if (refuses)
            return tl::unexpected(text("no", "non"));
        enabled = wanted;
        return {};
    }

    bool enabled = false;
    bool refuses = false;
};

struct Settings : PanelProgram {
    DesktopRecord record;
    LaunchAtLoginManager launchAtLogin{record, defaults};
    bool hasEvolution = false;
    EventStoreLocation inUse{QDir::homePath() + QStringLiteral("/data")};
    int tutorials = 0;
    std::function<void(tl::expected<QString, TextPair>)> picked;
    SettingsViewModel model{
        preferences,
        localizer,
        feedbackForm,
        {.collection = CollectionSwitch{.help = text("what is sent", "ce qui est envoyé"),
                                        .isOn = [] { return true; },
                                        .setOn = [](bool) {}},
         .launchAtLogin = &launchAtLogin,
         .dataStore = {.defaultFolder = QDir::homePath() + QStringLiteral("/data"),
                       .inUse = [this] { return inUse; },
                       .evolutionIsAvailable = [this] { return hasEvolution; },
                       .pickFolder = [this](const QString&, auto done) { picked = done; }},
         .showTutorial = [this] { ++tutorials; },
         .version = QStringLiteral("1.2.3")}};
    DataStoreViewModel& store = *model.dataStore();

    [[nodiscard]] std::optional<QString> stored() { return defaults.string(preferenceKeys::eventStore); }
};

TEST(SettingsViewModel, StoresEveryChangeUnderItsKeyAndSaysSo) {
    struct Case {
        const char* property;
        QVariant value;
        QString key;
        QJsonValue stored;
    };
    const Case cases[] = {
        {"language", "fr", "kestrantLanguage", "fr"},
        {"requiresClick", true, "requiresClickOrSwipeToExpand", true},
        {"hoverDelay", 0.3, "hoverExpandDelay", 0.3},
        {"autoCloseDelay", 1.0, "autoCloseDelay", 1.0},
        {"material", "black", "notchMaterial", "black"},
        {"sounds", 2, "soundEffectsProfile", 2},
        {"haptics", 1, "hapticFeedbackProfile", 1},
        {"showReminders", false, "showReminders", false},
        {"showCalendar", false, "showCalendar", false},
        {"showRemindersInCalendar", false, "showRemindersInCalendar", false},
        {"moduleOrder", "calendarFirst", "kestrantModuleOrder", "calendarFirst"},
        {"layoutRatio", "40/60", "kestrantLayoutRatio", "40/60"},
        {"launchesAtLogin", true, "launchAtLogin", true},
    };
    for (const Case& one : cases) {
        Settings program;
        EXPECT_NE(program.model.property(one.property), one.value) << one.property << " has a default";
        QSignalSpy changed(&program.model, &SettingsViewModel::changed);
        program.model.setProperty(one.property, one.value);
        EXPECT_EQ(program.defaults.object(one.key), one.stored) << one.property;
        EXPECT_EQ(program.model.property(one.property), one.value) << one.property;
        EXPECT_GE(changed.count(), 1) << one.property;
    }
}

TEST(SettingsViewModel, RefusesProfilesThatDoNotExist) {
    Settings program;
    program.model.setSounds(3);
    program.model.setHaptics(-1);
    program.model.setProperty("moduleOrder", QStringLiteral("sideways"));
    EXPECT_EQ(program.model.sounds(), 1);
    EXPECT_EQ(program.model.haptics(), 2);
    EXPECT_EQ(program.model.property("moduleOrder"), QStringLiteral("remindersFirst"));
}

TEST(SettingsViewModel, ShowsWhatTheDesktopHasAboutStartingAtLogin) {
    Settings program;
    program.record.enabled = true;
    program.model.refresh();
    EXPECT_TRUE(program.model.launchesAtLogin());
    program.record.refuses = true;
    program.model.setLaunchesAtLogin(false);
    EXPECT_TRUE(program.model.launchesAtLogin());
    EXPECT_EQ(program.model.launchAtLoginProblem(), QStringLiteral("no"));
    program.preferences.setLanguage(Language::french);
    EXPECT_EQ(program.model.launchAtLoginProblem(), QStringLiteral("non"));
    program.model.refresh();
    EXPECT_EQ(program.model.launchAtLoginProblem(), QString());
}

TEST(DataStoreViewModel, TakesOnlyFoldersThatCanBeUsed) {
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("file")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    struct Case {
        QString typed;
        std::optional<QString> path;
    };
    const Case cases[] = {
        {folder.path(), folder.path()},
        {u' ' + folder.path() + QStringLiteral("/./new//deep/ "),
         folder.path() + QStringLiteral("/new/deep")},
        {QStringLiteral("~"), QDir::cleanPath(QDir::homePath())},
        {QStringLiteral("~/calendars-that-are-new"),
         QDir::cleanPath(QDir::homePath() + QStringLiteral("/calendars-that-are-new"))},
        {file.fileName(), std::nullopt},
        {file.fileName() + QStringLiteral("/below"), std::nullopt},
        {QStringLiteral("calendars"), std::nullopt},
        {QString(), std::nullopt},
    };
    for (const Case& one : cases) {
        const auto usable = usableFolder(one.typed);
        EXPECT_EQ(usable ? std::optional(*usable) : std::nullopt, one.path) << qPrintable(one.typed);
    }
}

TEST(DataStoreViewModel, StoresAFolderOnceItIsKnown) {
    Settings program;
    const QTemporaryDir folder;
    EXPECT_EQ(program.store.kind(), QStringLiteral("default"));
    EXPECT_EQ(program.store.folder(), QStringLiteral("~/data"));
    program.store.setKind(QStringLiteral("folder"));
    EXPECT_EQ(program.store.kind(), QStringLiteral("folder"));
    EXPECT_EQ(program.store.folder(), QString());
    EXPECT_FALSE(program.stored().has_value());

    program.store.chooseFolder(QStringLiteral("nowhere"));
    EXPECT_FALSE(program.store.problem().isEmpty());
    EXPECT_FALSE(program.stored().has_value());
    program.store.chooseFolder(folder.path());
    EXPECT_EQ(program.store.problem(), QString());
    EXPECT_EQ(program.stored(), QStringLiteral("vdir:") + folder.path());

    program.store.setKind(QStringLiteral("default"));
    EXPECT_EQ(program.stored(), QStringLiteral("vdir:") + QDir::homePath() + QStringLiteral("/data"));
    EXPECT_EQ(program.store.folder(), QStringLiteral("~/data"));
}

TEST(DataStoreViewModel, ShowsWhatIsInUseWhileNothingWasChosen) {
    Settings program;
    program.inUse = EventStoreLocation::evolution();
    EXPECT_EQ(program.store.kind(), QStringLiteral("evolution"));
    program.inUse = {QStringLiteral("/elsewhere")};
    EXPECT_EQ(program.store.kind(), QStringLiteral("folder"));
    EXPECT_EQ(program.store.folder(), QStringLiteral("/elsewhere"));
    program.defaults.set(preferenceKeys::eventStore, QStringLiteral("nonsense"));
    EXPECT_EQ(program.store.folder(), QStringLiteral("/elsewhere"));
}

TEST(DataStoreViewModel, OffersTheDesktopsCalendarWhereItIs) {
    Settings program;
    EXPECT_EQ(program.store.kinds().size(), 2);
    program.hasEvolution = true;
    program.model.refresh();
    EXPECT_EQ(program.store.kinds().size(), 3);
    program.store.setKind(QStringLiteral("evolution"));
    EXPECT_EQ(program.stored(), QStringLiteral("evolution"));
    program.hasEvolution = false;
    program.model.refresh();
    EXPECT_EQ(program.store.kinds().size(), 3) << "what is chosen is shown, whether or not it is there";
}

TEST(DataStoreViewModel, TakesThePickedFolderOrSaysWhyThereIsNone) {
    Settings program;
    const QTemporaryDir folder;
    program.store.setKind(QStringLiteral("folder"));
    program.store.pickFolder();
    program.picked(tl::unexpected(text("no dialog", "pas de dialogue")));
    EXPECT_EQ(program.store.problem(), QStringLiteral("no dialog"));
    program.picked(folder.path());
    EXPECT_EQ(program.store.problem(), QString());
    EXPECT_EQ(program.stored(), QStringLiteral("vdir:") + folder.path());
}

/// The settings popover, open on the panel.
struct OpenSettings : Settings {
    OpenSettings() {
        expand();
        view.overlays().present(QStringLiteral("settings"), QStringLiteral("SettingsPopover.qml"),
                                view.contentItem(),
                                {{QStringLiteral("settings"), QVariant::fromValue(&model)}});
        settleSurface();
    }
    ~OpenSettings() {
        // The popover goes before what it is bound to.
        view.overlays().dismissAll();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    void settleSurface() {
        view.grabWindow();
        QCoreApplication::processEvents();
    }
};

TEST(SettingsPopover, ShowsEveryControlThatTabReaches) {
    OpenSettings program;
    program.store.chooseFolder(program.folder.path());
    program.settleSurface();
    auto* area = program.view.contentItem()->findChild<QQuickItem*>(QStringLiteral("settings.area"));
    ASSERT_NE(area, nullptr);
    QSet<QQuickItem*> visited;
    program.press(Qt::Key_Tab);
    while (!visited.contains(program.view.activeFocusItem())) {
        QQuickItem* focused = program.view.activeFocusItem();
        ASSERT_NE(focused, nullptr);
        visited.insert(focused);
        program.settleSurface();
        const QRectF place = focused->mapRectToItem(area, QRectF(0, 0, focused->width(), focused->height()));
        // The head and the foot stay where they are.
        if (area->isAncestorOf(focused) && focused->isVisible() && focused->height() > 0 &&
            focused->height() < 100) {
            EXPECT_GE(place.top(), 0) << focused;
            EXPECT_LE(place.bottom(), area->height()) << focused;
        }
        program.press(Qt::Key_Tab);
    }
    // Thirteen settings, the place of the data with its field and two buttons, and three more buttons.
    EXPECT_GE(visited.size(), 20);
}

TEST(SettingsPopover, ChangesLanguageWithoutARestart) {
    OpenSettings program;
    EXPECT_TRUE(program.shows("Wait before opening"));
    program.model.setLanguage(QStringLiteral("fr"));
    program.settleSurface();
    EXPECT_TRUE(program.shows("Attente avant l’ouverture"));
}

TEST(SettingsPopover, FoldsThePanelForTheTutorial) {
    PanelProgram program;
    program.expand();
    program.call("openSettings");
    ASSERT_TRUE(program.isOpen("settings"));
    Q_EMIT program.settings.tutorialRequested();
    EXPECT_FALSE(program.isOpen("settings"));
    EXPECT_FALSE(program.panel.isExpanded());
}

}  // namespace
