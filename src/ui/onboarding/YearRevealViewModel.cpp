#include "ui/onboarding/YearRevealViewModel.h"

#include "completion/CompletionLedgerRepository.h"
#include "foundation/CurrentTimeZone.h"
#include "foundation/Scheduler.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Preferences.h"
#include "ui/panel/Localizer.h"

#include <algorithm>
#include <numeric>

namespace kestrant {

std::array<int, 12> completionsByMonth(const std::vector<CompletionRecord>& records, int year,
                                       const TimeZone& zone) {
    std::array<int, 12> counts{};
    for (const CompletionRecord& record : records) {
        const QDate day = zone.dayOf(record.completedAt);
        if (day.year() == year)
            ++counts[std::size_t(day.month() - 1)];
    }
    return counts;
}

YearRevealViewModel::YearRevealViewModel(NotchInteractionModel& interaction,
                                         CompletionLedgerRepository& ledger, Preferences& preferences,
                                         const Clock& clock, const CurrentTimeZone& currentZone,
                                         Localizer& localizer, QObject* parent)
    : QObject(parent)
    , interaction_(interaction)
    , ledger_(ledger)
    , preferences_(preferences)
    , clock_(clock)
    , currentZone_(currentZone)
    , localizer_(localizer)
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
    connect(&localizer, &Localizer::languageChanged, this, &YearRevealViewModel::changed);
}

bool YearRevealViewModel::isShowing() const {
    return interaction_.isShowingInitialYearReveal();
}

void YearRevealViewModel::count() {
    const TimeZone& zone = currentZone_.zone();
    const QDate today = zone.dayOf(clock_.now());
    year_ = today.year();
    currentMonth_ = today.month() - 1;
    counts_ = completionsByMonth(ledger_.sortedRecords(), year_, zone);
    Q_EMIT changed();
}

int YearRevealViewModel::total() const {
    return std::accumulate(counts_.begin(), counts_.end(), 0);
}

QString YearRevealViewModel::heading() const {
    if (total() == 0)
        return localizer_(text("Welcome", "Bienvenue"));
    return localizer_(text("%1 so far", "%1 jusqu’ici")).arg(year_);
}

QString YearRevealViewModel::caption() const {
    if (total() == 0)
        return localizer_(text("A clean page. Ctrl N writes down the first reminder.",
                               "Une page blanche. Ctrl N note le premier rappel."));
    return total() == 1 ? localizer_(text("reminder completed", "rappel terminé"))
                        : localizer_(text("reminders completed", "rappels terminés"));
}

QString YearRevealViewModel::summary() const {
    if (total() == 0)
        return heading() + QStringLiteral(". ") + caption();
    return QStringLiteral("%1: %2 %3").arg(heading(), localizer_.locale().toString(total()), caption());
}

QVariantList YearRevealViewModel::months() const {
    const int most = *std::max_element(counts_.begin(), counts_.end());
    QVariantList months;
    for (int month = 0; month < int(counts_.size()); ++month) {
        const int count = counts_[std::size_t(month)];
        months.append(QVariantMap{
            {QStringLiteral("initial"),
             localizer_.locale().standaloneMonthName(month + 1, QLocale::ShortFormat).left(1).toUpper()},
            {QStringLiteral("count"), count},
            {QStringLiteral("share"), most > 0 ? double(count) / most : 0.0},
            {QStringLiteral("isCurrent"), month == currentMonth_},
        });
    }
    return months;
}

void YearRevealViewModel::finish() {
    if (!isShowing())
        return;
    preferences_.completedInitialYearReveal.set(true);
    interaction_.setIsShowingInitialYearReveal(false);
    interaction_.dismissRoute(NotchInteractionModel::initialYearRevealRoute);
}

}  // namespace kestrant
