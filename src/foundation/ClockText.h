#pragma once

#include "foundation/Text.h"

#include <QLocale>
#include <QString>
#include <QTime>

namespace kestrant {

/// How many hours a person's clock has.
enum class ClockHours { twentyFour, twelve };

/// French is written in 24 hours; English as the person's own locale has it.
[[nodiscard]] ClockHours clockHours(Language language, const QLocale& personal);

/// "14:05", or "2:05 PM" with a space at which no line is broken.
[[nodiscard]] QString clockText(QTime time, ClockHours hours);

}  // namespace kestrant
