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

QString rawValue(RestingContent content) {
    switch (content) {
    case RestingContent::nothing:
        break;
    case RestingContent::whatComes:
        return QStringLiteral("whatComes");
    case RestingContent::everything:
        return QStringLiteral("everything");
    }
    return QStringLiteral("nothing");
}

TextPair title(RestingContent content) {
    switch (content) {
    case RestingContent::nothing:
        break;
    case RestingContent::whatComes:
        return text("what comes next", "ce qui vient");
    case RestingContent::everything:
        return text("what comes, and the count", "ce qui vient, et le compte");
    }
    return text("nothing", "rien");
}

std::optional<RestingContent> restingContentFromRawValue(QStringView raw) {
    for (const RestingContent content : allRestingContents) {
        if (raw == rawValue(content))
            return content;
    }
    return {};
}

}  // namespace kestrant
