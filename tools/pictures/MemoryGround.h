#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "cues/SensoryFeedback.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "eventkit/model/OpenReminders.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/NotificationCenter.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Localization.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelComposition.h"

#include <QLocale>
#include <QTemporaryDir>

namespace kestrant {

/// The surroundings of a panel below its window, for pictures and tests: a database in memory on Saturday 21
/// November 2026, 14:30 in Paris. `Time` is a clock and a scheduler; it, the defaults, the player of cues and
/// the executor are the caller's own kinds. Thread: main.
template <typename Time, typename Defaults, typename Cues, typename Executor>
struct MemoryGround {
    MemoryGround(const QLocale& system, Language language, double screenWidth)
        : preferences(defaults, [system] { return system; })
        , geometry(Screen{.name = QStringLiteral("memory"), .frame = QRectF(0, 0, screenWidth, 982)}) {
        preferences.setLanguage(language);
        appearance.setReducedMotion(true);
        interaction.setExpansionEnabled(true);
    }

    Time time{*parseIso8601(u"2026-11-21T14:30:00+01:00")};
    FixedTimeZone currentZone{*TimeZone::named("Europe/Paris")};
    Defaults defaults;
    Preferences preferences;
    Localization localization{preferences};
    Cues cues;
    SilentHapticPerformer haptics;
    SensoryFeedback feedback{preferences, cues, haptics};
    NotificationCenter notifications;
    InMemoryEventStore database{time, time, currentZone};
    OpenReminders openReminders{database, time};
    QTemporaryDir folder;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    Executor executor;
    NotchInteractionModel interaction{time, preferences, feedback};
    NotchGeometry geometry;
    Localizer localizer{localization};
    Appearance appearance{nullptr};
    PanelComposition::Services services{
        .eventStore = database,
        .openReminders = openReminders,
        .scheduler = time,
        .clock = time,
        .currentZone = currentZone,
        .preferences = preferences,
        .localization = localization,
        .localizer = localizer,
        .notifications = notifications,
        .ledger = ledger,
        .executor = executor,
        .locale = [] { return QLocale(QLocale::English, QLocale::UnitedKingdom); },
        .feedback = feedback,
        .interaction = interaction,
        .geometry = geometry,
        .recapShareBaseUrl = QStringLiteral("https://recap.example.org/r")};
};

}  // namespace kestrant
