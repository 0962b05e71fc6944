#pragma once

#include "reminders/model/ReminderTask.h"

#include <QColor>

namespace kestrant {

/// The colour of "all lists": no list's own.
inline QColor allListsColor() {
    return {0xc9, 0xcb, 0xd4};
}

/// A list's colour, grey where it has none (or there is no list).
inline QColor listColor(const ReminderList* list) {
    if (!list || !list->color)
        return {0x8e, 0x8e, 0x93};
    return {list->color->red, list->color->green, list->color->blue};
}

}  // namespace kestrant
