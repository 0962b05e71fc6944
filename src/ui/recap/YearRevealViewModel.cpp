#include "ui/recap/YearRevealViewModel.h"

#include "completion/CompletionLedgerRepository.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Preferences.h"
#include "ui/panel/Localizer.h"

#include <utility>

namespace kestrant {

YearRevealViewModel::YearRevealViewModel(NotchInteractionModel& interaction,
                                         CompletionLedgerRepository& ledger, Preferences& preferences,
                                         const Clock& clock, const CurrentTimeZone& currentZone,
                                         Localizer& localizer, std::function<QLocale()> locale,
                                         QObject* parent)
    : QObject(parent)
    , interaction_(interaction)
    , ledger_(ledger)
    , preferences_(preferences)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
    , locale_(std::move(locale))
    , subscription_(ledger.observeWrites([this](const auto&) {
        // Reminders may still be on their way in while the year is shown.
        if (isShowing())
            count();
    })) {
    connect(&interaction, &NotchInteractionModel::isShowingInitialYearRevealChanged, this, [this] {
        if (interaction_.isShowingInitialYearReveal())
            count();
        Q_EMIT isShowingChanged();
    });
    connect(&interaction, &NotchInteractionModel::phaseChanged, this, [this] {
        if (!interaction_.isExpanded() && preferences_.completedInitialYearReveal())
            finish();
    });
    connect(&localizer, &Localizer::languageChanged, this, [this] {
        if (isShowing())
            count();
    });
}

bool YearRevealViewModel::isShowing() const {
    return interaction_.isShowingInitialYearReveal();
}

void YearRevealViewModel::count() {
    const TimeZone zone = currentZone_.zone();
    const Instant now = clock_.now();
    const QDate today = zone.dayOf(now);
    const Qt::DayOfWeek firstDay = locale_().firstDayOfWeek();
    card_ = recapCard(recapOf(periodContaining(RecapKind::year, today, firstDay),
                              completedDays(ledger_.sortedRecords(), zone, now), today),
                      today, firstDay, localizer_.language(), localizer_.locale());
    Q_EMIT changed();
}

QString YearRevealViewModel::heading() const {
    if (total() == 0)
        return localizer_(text("Your year starts here", "Votre année commence ici"));
    return localizer_(text("%1 so far", "%1 jusqu’ici")).arg(card_.title);
}

QString YearRevealViewModel::caption() const {
    if (total() == 0)
        return localizer_(text("A clean page. Ctrl N writes down the first reminder.",
                               "Une page blanche. Ctrl N note le premier rappel."));
    return card_.caption;
}

QString YearRevealViewModel::summary() const {
    if (total() == 0)
        return heading() + QStringLiteral(". ") + caption();
    return QStringLiteral("%1: %2 %3").arg(heading(), card_.number, caption());
}

void YearRevealViewModel::noteSeen() {
    if (isShowing())
        preferences_.completedInitialYearReveal.set(true);
}

void YearRevealViewModel::finish() {
    if (!isShowing())
        return;
    preferences_.completedInitialYearReveal.set(true);
    interaction_.setIsShowingInitialYearReveal(false);
    interaction_.dismissRoute(NotchInteractionModel::initialYearRevealRoute);
}

}  // namespace kestrant
