#pragma once

#include "reminders/ReminderTask.h"

#include <QColor>

namespace kestrant {

/// The colour that stands for "all lists".
inline QColor allListsColor() {
    return {0x0a, 0x84, 0xff};
}

/// A list's colour, grey where it has none (or there is no list).
inline QColor listColor(const ReminderList* list) {
    if (!list || !list->color)
        return {0x8e, 0x8e, 0x93};
    return {list->color->red, list->color->green, list->color->blue};
}

}  // namespace kestrant
