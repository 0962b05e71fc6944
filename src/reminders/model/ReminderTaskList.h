#pragma once

#include "reminders/model/ReminderTask.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace kestrant {

/// Some of a set of tasks, in an order. A value that never changes and is cheap to make: the tasks themselves
/// are shared with every other list made of the same set. Thread: any.
class ReminderTaskList {
  public:
    using Tasks = std::shared_ptr<const std::vector<ReminderTask>>;
    using value_type = ReminderTask;

    class const_iterator {
      public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = ReminderTask;
        using difference_type = std::ptrdiff_t;
        using pointer = const ReminderTask*;
        using reference = const ReminderTask&;

        const_iterator() = default;
        const_iterator(const ReminderTask* tasks, std::vector<std::uint32_t>::const_iterator place)
            : tasks_(tasks)
            , place_(place) {}
        reference operator*() const { return tasks_[*place_]; }
        pointer operator->() const { return tasks_ + *place_; }
        const_iterator& operator++() {
            ++place_;
            return *this;
        }
        const_iterator operator++(int) {
            const const_iterator before = *this;
            ++place_;
            return before;
        }
        bool operator==(const const_iterator& other) const { return place_ == other.place_; }

      private:
        const ReminderTask* tasks_ = nullptr;
        std::vector<std::uint32_t>::const_iterator place_;
    };
    using iterator = const_iterator;

    ReminderTaskList() : ReminderTaskList(std::make_shared<const std::vector<ReminderTask>>(), {}) {}
    /// `order` holds indices into `tasks`, which is not null.
    ReminderTaskList(Tasks tasks, std::vector<std::uint32_t> order)
        : tasks_(std::move(tasks))
        , order_(std::move(order)) {}

    [[nodiscard]] std::size_t size() const { return order_.size(); }
    [[nodiscard]] bool empty() const { return order_.empty(); }
    [[nodiscard]] const ReminderTask& operator[](std::size_t place) const { return (*tasks_)[order_[place]]; }
    [[nodiscard]] const_iterator begin() const { return {tasks_->data(), order_.begin()}; }
    [[nodiscard]] const_iterator end() const { return {tasks_->data(), order_.end()}; }

    /// The tasks for which `keep` holds, in their order.
    template <typename Predicate>
    [[nodiscard]] ReminderTaskList filtered(Predicate keep) const {
        std::vector<std::uint32_t> kept;
        for (const std::uint32_t index : order_) {
            if (keep((*tasks_)[index]))
                kept.push_back(index);
        }
        return {tasks_, std::move(kept)};
    }

    /// A copy of the tasks themselves.
    // NOLINTNEXTLINE(google-explicit-constructor): a list is what it holds.
    operator std::vector<ReminderTask>() const { return {begin(), end()}; }

    /// Whether the same tasks follow each other.
    bool operator==(const ReminderTaskList& other) const {
        if (tasks_ == other.tasks_)
            return order_ == other.order_;
        return size() == other.size() && std::equal(begin(), end(), other.begin());
    }

  private:
    Tasks tasks_;
    std::vector<std::uint32_t> order_;
};

}  // namespace kestrant
