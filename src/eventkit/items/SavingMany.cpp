#include "eventkit/items/OpenFile.h"
#include "eventkit/model/EKErrors.h"

#include <set>
#include <utility>

namespace kestrant::items {
/// Edits of one file each that stay in their file are written together. All others, and those whose file
/// changed in between, are saved one by one.
std::vector<tl::expected<EKSaveResult, EKError>> ItemDatabase::saveAll(const std::vector<ReminderEdit>& edits,
                                                                       Instant now, const TimeZone& local) {
    std::vector<std::size_t> candidates;
    std::vector<FileLocation> locations;
    std::set<FileLocation> taken;
    for (std::size_t i = 0; isOpen_ && i < edits.size(); ++i) {
        if (!edits[i].base)
            continue;
        const Entry* const entry = snapshot_->reminders.find(edits[i].base->calendarItemIdentifier);
        if (!entry || !taken.insert(locationOf(*entry)).second)
            continue;
        candidates.push_back(i);
        locations.push_back(locationOf(*entry));
    }

    auto texts = storage_.readAll(locations);
    std::vector<std::size_t> indices;
    std::vector<OpenReminder> items;
    std::vector<ItemStorage::Replacement> replacements;
    for (std::size_t k = 0; k < candidates.size(); ++k) {
        const auto& [base, edited] = edits[candidates[k]];
        auto file = opened(locations[k], std::move(texts[k]));
        auto found = file ? findIn<icalendar::TodoItem>(std::move(*file), base->calendarItemIdentifier, local)
                          : std::nullopt;
        if (!found)
            continue;
        OpenReminder item = OpenReminder::of(std::move(*found), base->calendarItemIdentifier);
        auto wish = wanted(item.location, *base, edited, item.current);
        if (!wish || !*wish || (*wish)->target != item.location.collection)
            continue;
        Revision revision = revised(item, std::move((*wish)->data), now, local);
        if (revision.copy)
            continue;
        replacements.push_back({item.location, item.document, std::move(revision.document), item.version});
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
        noteWritten(items[k].location, *written[k], local);
        results[indices[k]] = saved(
            items[k], {{items[k].location, items[k].item.key, std::move(written[k]->text)}, std::nullopt});
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
