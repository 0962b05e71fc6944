#include "eventkit/items/OpenItem.h"
#include "eventkit/model/EKErrors.h"

#include <set>
#include <utility>

namespace kestrant::items {
/// Edits of one file each that stay in their file are written together. All others, and those whose file
/// changed in between, are saved one by one.
std::vector<tl::expected<EKSaveResult, EKError>> ItemDatabase::saveAll(const std::vector<ReminderEdit>& edits,
                                                                       Instant now, const TimeZone& local) {
    std::vector<std::size_t> candidates;
    std::vector<Place> places;
    std::set<Place> taken;
    for (std::size_t i = 0; isOpen_ && i < edits.size(); ++i) {
        if (!edits[i].base)
            continue;
        const auto entry = snapshot_->reminders.constFind(edits[i].base->calendarItemIdentifier);
        if (entry == snapshot_->reminders.cend() || !taken.insert(placeOf(*entry)).second)
            continue;
        candidates.push_back(i);
        places.push_back(placeOf(*entry));
    }

    auto texts = storage_.readAll(places);
    std::vector<std::size_t> indices;
    std::vector<OpenItem> items;
    std::vector<ItemStorage::Replacement> replacements;
    for (std::size_t k = 0; k < candidates.size(); ++k) {
        const auto& [base, edited] = edits[candidates[k]];
        auto file = opened(places[k], std::move(texts[k]));
        auto found = file ? findIn<icalendar::TodoItem>(std::move(*file), base->calendarItemIdentifier, local)
                          : std::nullopt;
        if (!found)
            continue;
        OpenItem item = OpenItem::of(std::move(*found), base->calendarItemIdentifier);
        auto wish = wanted(item.place, *base, edited, item.current);
        if (!wish || !*wish || (*wish)->target != item.place.collection)
            continue;
        Revision revision = revised(item, std::move((*wish)->data), now, local);
        if (revision.copy)
            continue;
        replacements.push_back({item.place, item.document, std::move(revision.document), item.version});
        indices.push_back(candidates[k]);
        items.push_back(std::move(item));
    }

    std::vector<std::optional<tl::expected<EKSaveResult, EKError>>> results(edits.size());
    auto written = storage_.replaceAll(replacements);
    for (std::size_t k = 0; k < written.size(); ++k) {
        if (!written[k]) {
            if (const auto* error = std::get_if<EKError>(&written[k].error()))
                results[indices[k]] = tl::unexpected(*error);
            continue;
        }
        noteWritten(items[k].place, *written[k], local);
        results[indices[k]] =
            saved(items[k], {{items[k].place, items[k].item.key, std::move(written[k]->text)}, std::nullopt});
    }
    if (!written.empty())
        rebuildSnapshot();

    std::vector<tl::expected<EKSaveResult, EKError>> answer;
    for (std::size_t i = 0; i < edits.size(); ++i)
        answer.push_back(results[i] ? std::move(*results[i])
                                    : save(edits[i].base, edits[i].edited, now, local));
    return answer;
}

}  // namespace kestrant::items
