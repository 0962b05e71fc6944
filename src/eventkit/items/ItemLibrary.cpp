#include "eventkit/items/ItemLibrary.h"

#include "eventkit/icalendar/Todo.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <utility>

namespace kestrant::items {
namespace {

/// Calm colours that stay apart on a dark ground.
constexpr std::array<Color, 10> palette{{{0x4C, 0x9F, 0xFF},
                                         {0xFF, 0x9F, 0x43},
                                         {0x5C, 0xC8, 0x7A},
                                         {0xF2, 0x6D, 0x78},
                                         {0xB0, 0x8C, 0xF5},
                                         {0xF4, 0xC9, 0x4E},
                                         {0x4F, 0xC7, 0xC7},
                                         {0xEC, 0x84, 0xC0},
                                         {0xA3, 0xB8, 0x6C},
                                         {0xC2, 0x9B, 0x79}}};

}  // namespace

Color unusedColor(const Library& library) {
    const auto isUsed = [&](const Color& color) {
        return std::any_of(library.collections.begin(), library.collections.end(),
                           [&](const auto& collection) { return collection.second.color == color; });
    };
    const auto found = std::find_if_not(palette.begin(), palette.end(), isUsed);
    return found != palette.end() ? *found : palette[library.collections.size() % palette.size()];
}

void Changes::add(const Changes& other) {
    everything = everything || other.everything;
    collections = collections || other.collections;
    for (const auto& [collection, names] : other.files)
        files[collection].insert(names.begin(), names.end());
}

TextPair unreadable(const QString& name, const TextPair& reason) {
    const TextPair pair = text("“%1” could not be read and is left alone: %2.",
                               "« %1 » n’a pas pu être lu et reste tel quel : %2.");
    return {pair.english.arg(name, reason.english), pair.french.arg(name, reason.french)};
}

bool sameContent(const ItemFile& a, const ItemFile& b) {
    return a.holdsEvents == b.holdsEvents && a.problem == b.problem &&
           std::equal(a.reminders.begin(), a.reminders.end(), b.reminders.begin(), b.reminders.end(),
                      [](const FileReminder& x, const FileReminder& y) {
                          return x.key == y.key && x.ordinal == y.ordinal && *x.data == *y.data;
                      }) &&
           std::equal(a.events.begin(), a.events.end(), b.events.begin(), b.events.end(),
                      [](const FileEvent& x, const FileEvent& y) {
                          return x.series->item() == y.series->item() && x.ordinal == y.ordinal;
                      });
}

ItemFile readItems(const QByteArray& text, const Place& place, const ZoneCalendar& local) {
    ItemFile result;
    const auto document = icalendar::Document::parse(text);
    if (!document) {
        result.problem = unreadable(QFile::decodeName(place.collection + '/' + place.file), document.error());
        return result;
    }
    result.holdsEvents = !document->components("VEVENT").empty();
    const QString calendar = QFile::decodeName(place.collection);
    std::map<QByteArray, int> seen;
    for (icalendar::TodoItem& item : icalendar::readTodos(*document, local)) {
        FileReminder reminder{item.key, seen[item.key]++, nullptr};
        item.data.calendarIdentifier = calendar;
        item.data.calendarItemIdentifier = QString::fromUtf8(item.key);
        reminder.data = std::make_shared<const EKReminderData>(std::move(item.data));
        result.reminders.push_back(std::move(reminder));
    }
    seen.clear();
    for (icalendar::EventItem& item : icalendar::readEvents(*document, local)) {
        FileEvent event{item.key, seen[item.key]++, nullptr};
        event.series = std::make_shared<const EventSeries>(std::move(item), QString::fromUtf8(event.key),
                                                           calendar, local);
        result.events.push_back(std::move(event));
    }
    return result;
}

}  // namespace kestrant::items
