#pragma once

#include "cli/CommandLineOutput.h"
#include "completion/Recap.h"

#include <QJsonObject>
#include <QString>

#include <vector>

namespace kestrant {

/// One period with the lists its completions were in, as far as they are known.
struct PrintedRecap {
    Recap recap;
    std::vector<ListCount> lists;
};

/// The recap of a period. Dates are local days; "days" has one number for each of the period's.
[[nodiscard]] QJsonObject recapAsJson(const PrintedRecap& printed, Qt::DayOfWeek firstDayOfWeek);
/// A line for each: title, number, sentence.
[[nodiscard]] QString recapsAsTable(const std::vector<PrintedRecap>& recaps, const OutputContext& context);
/// One in full: its number and sentence, the days of a week or the months of a year with bars, and the lists.
[[nodiscard]] QString recapAsText(const PrintedRecap& printed, const OutputContext& context);

}  // namespace kestrant
