#pragma once

#include "foundation/Instant.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace kestrant {

/// Finds what touches a span of time without looking at everything: values in the order of their starts, in
/// blocks with the latest end in each. Copies share the blocks, so that a change costs what the values of one
/// block do.
template <typename Value>
class IntervalIndex {
  public:
    void add(Instant start, Instant end, Value value) { added_.push_back({start, end, std::move(value)}); }
    /// Takes a value out that was added with this start.
    void remove(Instant start, const Value& value) {
        const auto isIt = [&](const Entry& entry) { return entry.value == value; };
        std::erase_if(added_, isIt);
        // It may be in several blocks' range, since many values may have one start.
        for (auto block = firstReaching(start);
             block != blocks_.end() && (**block).entries.front().start <= start; ++block) {
            const auto& entries = (**block).entries;
            const auto found = std::find_if(entries.begin(), entries.end(), isIt);
            if (found == entries.end())
                continue;
            std::vector<Entry> rest(entries.begin(), found);
            rest.insert(rest.end(), std::next(found), entries.end());
            if (rest.empty())
                blocks_.erase(block);
            else
                *block = blockOf(std::move(rest));
            return;
        }
    }

    /// To be called after the last change and before the first forEachTouching().
    void prepare() {
        const auto startsEarlier = [](const Entry& a, const Entry& b) { return a.start < b.start; };
        std::vector<Entry> added = std::exchange(added_, {});
        std::stable_sort(added.begin(), added.end(), startsEarlier);
        if (blocks_.empty()) {
            append(blocks_, std::move(added));
            return;
        }
        for (Entry& entry : added) {
            auto block = firstReaching(entry.start);
            if (block == blocks_.end())
                --block;
            std::vector<Entry> entries = (**block).entries;
            entries.insert(std::upper_bound(entries.begin(), entries.end(), entry, startsEarlier),
                           std::move(entry));
            Blocks parts;
            append(parts, std::move(entries));
            block = blocks_.erase(block);
            blocks_.insert(block, parts.begin(), parts.end());
        }
    }

    /// Calls `visit` for each value that starts at or before `to` and ends at or after `from`.
    template <typename Visit>
    void forEachTouching(Instant from, Instant to, Visit visit) const {
        for (const auto& block : blocks_) {
            if (block->entries.front().start > to)
                return;
            if (block->latestEnd < from)
                continue;
            for (const Entry& entry : block->entries) {
                if (entry.start <= to && entry.end >= from)
                    visit(entry.value);
            }
        }
    }

  private:
    static constexpr std::size_t mostInBlock = 512;

    struct Entry {
        Instant start;
        Instant end;
        Value value;
    };
    struct Block {
        /// In the order of their starts; never empty.
        std::vector<Entry> entries;
        Instant latestEnd;
    };
    using Blocks = std::vector<std::shared_ptr<const Block>>;

    static std::shared_ptr<const Block> blockOf(std::vector<Entry> entries) {
        Instant latest = Instant::min();
        for (const Entry& entry : entries)
            latest = std::max(latest, entry.end);
        return std::make_shared<const Block>(Block{std::move(entries), latest});
    }
    /// Appends sorted values, in as many blocks as they need.
    static void append(Blocks& blocks, std::vector<Entry> entries) {
        if (entries.size() <= mostInBlock) {
            if (!entries.empty())
                blocks.push_back(blockOf(std::move(entries)));
            return;
        }
        // Half full, so that there is room for what is added between them.
        constexpr std::size_t many = mostInBlock / 2;
        for (std::size_t begin = 0; begin < entries.size(); begin += many) {
            const auto first = std::make_move_iterator(entries.begin() + std::ptrdiff_t(begin));
            const auto count = std::ptrdiff_t(std::min(many, entries.size() - begin));
            blocks.push_back(blockOf(std::vector<Entry>(first, first + count)));
        }
    }
    /// The first block that ends with a start at or after this one.
    typename Blocks::iterator firstReaching(Instant start) {
        return std::partition_point(blocks_.begin(), blocks_.end(),
                                    [&](const auto& block) { return block->entries.back().start < start; });
    }

    Blocks blocks_;
    std::vector<Entry> added_;
};

}  // namespace kestrant
