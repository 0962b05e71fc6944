#pragma once

#include "foundation/Text.h"
#include "recap/Recap.h"

#include <QLocale>
#include <QString>

namespace kestrant {

/// "Today", "This week", "November", "2026" for the period that holds `today`; other days, weeks and months
/// by their dates. `dates` names days and months, and is of `language`.
[[nodiscard]] QString recapTitle(const RecapPeriod& period, QDate today, Language language,
                                 const QLocale& dates);

/// A period by its dates, briefly: "Sat 21 Nov", "16 – 22 Nov", "November 2026", "2026".
[[nodiscard]] QString recapLabel(const RecapPeriod& period, QDate today, Language language,
                                 const QLocale& dates);

/// One sentence to go with the number, without a full stop. It compares only where that is good news.
[[nodiscard]] QString recapSentence(const Recap& recap, QDate today, Language language, const QLocale& dates);

/// What else there is to tell where there is more room, without a full stop; empty for nothing. It repeats
/// nothing of recapSentence().
[[nodiscard]] QString recapDetail(const Recap& recap, QDate today, Language language, const QLocale& dates);

}  // namespace kestrant
