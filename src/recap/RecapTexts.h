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

/// One sentence to go with the number, without a full stop. It compares only where that is good news.
[[nodiscard]] QString recapSentence(const Recap& recap, Language language, const QLocale& dates);

}  // namespace kestrant
