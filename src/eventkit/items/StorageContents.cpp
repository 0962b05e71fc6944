#include "eventkit/items/StorageContents.h"

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

Color unusedColor(const StorageContents& contents) {
    const auto isUsed = [&](const Color& color) {
        return std::any_of(contents.collections.begin(), contents.collections.end(),
                           [&](const auto& collection) { return collection.second.color == color; });
    };
    const auto found = std::find_if_not(palette.begin(), palette.end(), isUsed);
    return found != palette.end() ? *found : palette[contents.collections.size() % palette.size()];
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

TextPair tooCostly(const QString& name) {
    const TextPair pair =
        text("“%1” repeats too often to be shown in full: only the dates nearest to today are.",
             "« %1 » se répète trop souvent pour être montré en entier : seules les dates les plus "
             "proches d’aujourd’hui le sont.");
    return {pair.english.arg(name), pair.french.arg(name)};
}

bool sameContent(const ItemFile& a, const ItemFile& b) {
    const auto isSameProblem = [&] {
        return a.problem && b.problem ? *a.problem == *b.problem : a.problem == b.problem;
    };
    return a.holdsEvents == b.holdsEvents && isSameProblem() &&
           std::equal(a.reminders.begin(), a.reminders.end(), b.reminders.begin(), b.reminders.end(),
                      [](const auto& x, const auto& y) { return *x == *y; }) &&
           std::equal(a.events.begin(), a.events.end(), b.events.begin(), b.events.end(),
                      [](const CompactEvent& x, const CompactEvent& y) { return x.isSame(y); });
}

ItemReader::ItemReader(const QByteArray& collection, const TimeZone& local)
    : calendar_(QFile::decodeName(collection))
    , local_(local) {}

ItemFile ItemReader::read(const QByteArray& text, const QByteArray& file) const {
    ItemFile result;
    const auto document = icalendar::Document::parse(text);
    if (!document) {
        result.problem = std::make_shared<const TextPair>(
            unreadable(calendar_ + QLatin1Char('/') + QFile::decodeName(file), document.error()));
        return result;
    }
    result.holdsEvents = !document->components("VEVENT").empty();
    for (icalendar::TodoItem& item : icalendar::readTodos(*document, local_)) {
        item.data.calendarIdentifier = calendar_;
        item.data.calendarItemIdentifier = QString::fromUtf8(item.key);
        result.reminders.push_back(std::make_shared<const EKReminderData>(std::move(item.data)));
    }
    for (icalendar::EventItem& item : icalendar::readEvents(*document, local_)) {
        const QString identifier = QString::fromUtf8(item.key);
        result.events.emplace_back(std::move(item), identifier, calendar_, local_);
    }
    return result;
}

}  // namespace kestrant::items
