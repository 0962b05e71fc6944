#pragma once

#include "foundation/Choice.h"

#include <array>

namespace kestrant {

/// Which module comes first in the panel.
enum class KestrantModuleOrder { remindersFirst, calendarFirst };

template <>
inline constexpr auto choicesOf<KestrantModuleOrder> = std::to_array<Choice<KestrantModuleOrder>>({
    {KestrantModuleOrder::remindersFirst, "remindersFirst", "Reminders | Calendar", "Rappels | Calendrier"},
    {KestrantModuleOrder::calendarFirst, "calendarFirst", "Calendar | Reminders", "Calendrier | Rappels"},
});

/// How the width is shared: the first share goes to the module that comes first.
enum class KestrantLayoutRatio { r30_70, r40_60, r50_50, r60_40, r70_30 };

template <>
inline constexpr auto choicesOf<KestrantLayoutRatio> = std::to_array<Choice<KestrantLayoutRatio>>({
    {KestrantLayoutRatio::r30_70, "30/70", "30/70", "30/70"},
    {KestrantLayoutRatio::r40_60, "40/60", "40/60", "40/60"},
    {KestrantLayoutRatio::r50_50, "50/50", "50/50", "50/50"},
    {KestrantLayoutRatio::r60_40, "60/40", "60/40", "60/40"},
    {KestrantLayoutRatio::r70_30, "70/30", "70/30", "70/30"},
});

/// Percent of the width for the module that comes first, 30 to 70.
[[nodiscard]] constexpr int firstShare(KestrantLayoutRatio ratio) {
    return 30 + 10 * static_cast<int>(ratio);
}

/// The content of the resting notch.
enum class RestingContent {
    /// Black and silent.
    nothing,
    /// An event about to begin or going on, and what is overdue.
    whatComes,
    /// Also how much is open today.
    everything,
};

template <>
inline constexpr auto choicesOf<RestingContent> = std::to_array<Choice<RestingContent>>({
    {RestingContent::nothing, "nothing", "nothing", "rien"},
    {RestingContent::whatComes, "whatComes", "what comes next", "ce qui vient"},
    {RestingContent::everything, "everything", "what comes, and the count", "ce qui vient, et le compte"},
});

}  // namespace kestrant
