#include "preferences/Layout.h"

namespace kestrant {

QString rawValue(KestrantModuleOrder order) {
    return order == KestrantModuleOrder::remindersFirst ? QStringLiteral("remindersFirst")
                                                        : QStringLiteral("calendarFirst");
}

TextPair title(KestrantModuleOrder order) {
    return order == KestrantModuleOrder::remindersFirst
               ? text("Reminders | Calendar", "Rappels | Calendrier")
               : text("Calendar | Reminders", "Calendrier | Rappels");
}

std::optional<KestrantModuleOrder> moduleOrderFromRawValue(QStringView raw) {
    for (const KestrantModuleOrder order : allModuleOrders) {
        if (raw == rawValue(order))
            return order;
    }
    return {};
}

QString rawValue(KestrantLayoutRatio ratio) {
    return QStringLiteral("%1/%2").arg(firstShare(ratio)).arg(100 - firstShare(ratio));
}

std::optional<KestrantLayoutRatio> layoutRatioFromRawValue(QStringView raw) {
    for (const KestrantLayoutRatio ratio : allLayoutRatios) {
        if (raw == rawValue(ratio))
            return ratio;
    }
    return {};
}

}  // namespace kestrant
