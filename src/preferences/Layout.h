#pragma once

#include "foundation/Text.h"

#include <QString>

#include <array>
#include <optional>

namespace kestrant {

/// Which module comes first in the panel.
enum class KestrantModuleOrder { remindersFirst, calendarFirst };

inline constexpr std::array allModuleOrders{KestrantModuleOrder::remindersFirst,
                                            KestrantModuleOrder::calendarFirst};

[[nodiscard]] QString rawValue(KestrantModuleOrder order);
[[nodiscard]] TextPair title(KestrantModuleOrder order);
[[nodiscard]] std::optional<KestrantModuleOrder> moduleOrderFromRawValue(QStringView raw);

/// How the width is shared: the first share goes to the module that comes first.
enum class KestrantLayoutRatio { r30_70, r40_60, r50_50, r60_40, r70_30 };

inline constexpr std::array allLayoutRatios{KestrantLayoutRatio::r30_70, KestrantLayoutRatio::r40_60,
                                            KestrantLayoutRatio::r50_50, KestrantLayoutRatio::r60_40,
                                            KestrantLayoutRatio::r70_30};

/// Percent of the width for the module that comes first, 30 to 70.
[[nodiscard]] constexpr int firstShare(KestrantLayoutRatio ratio) {
    return 30 + 10 * static_cast<int>(ratio);
}
/// "70/30"; also the title, in both languages.
[[nodiscard]] QString rawValue(KestrantLayoutRatio ratio);
[[nodiscard]] std::optional<KestrantLayoutRatio> layoutRatioFromRawValue(QStringView raw);

/// The content of the resting notch.
enum class RestingContent {
    /// Black and silent.
    nothing,
    /// An event about to begin or going on, and what is overdue.
    whatComes,
    /// Also how much is open today.
    everything,
};

inline constexpr std::array allRestingContents{RestingContent::nothing, RestingContent::whatComes,
                                               RestingContent::everything};

[[nodiscard]] QString rawValue(RestingContent content);
[[nodiscard]] TextPair title(RestingContent content);
[[nodiscard]] std::optional<RestingContent> restingContentFromRawValue(QStringView raw);

}  // namespace kestrant
