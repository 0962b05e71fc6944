#pragma once

#include "foundation/Text.h"
#include "reminders/ReminderStoreError.h"

#include <QUuid>

#include <tl/expected.hpp>

#include <functional>
#include <optional>

namespace kestrant {

/// Takes note of the actions a person performs, so that they can be taken back. Thread: main.
class ReminderActionHistory {
  public:
    using Done = std::function<void(tl::expected<void, ReminderStoreError>)>;
    /// Calls its argument exactly once, when the operation has ended.
    using Operation = std::function<void(Done)>;

    virtual ~ReminderActionHistory() = default;

    /// The new entry's id; absent when nothing was recorded because an entry is being replayed.
    virtual std::optional<QUuid> record(const TextPair& title, Operation undo, Operation redo) = 0;
};

}  // namespace kestrant
