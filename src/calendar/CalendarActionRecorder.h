#pragma once

#include "eventkit/model/EKTypes.h"
#include "foundation/Text.h"

#include <tl/expected.hpp>

#include <functional>

namespace kestrant {

/// A change of the calendar that has happened and can be taken back.
struct CalendarAction {
    using Done = std::function<void(tl::expected<void, EKError>)>;
    /// Calls its argument exactly once, within the call or later, when the operation has ended; with
    /// outcomeUnknown first where that is not known for long.
    using Operation = std::function<void(Done)>;

    /// A short verb phrase: "Delete event".
    TextPair title;
    /// A sentence about what has happened.
    TextPair outcome;
    Operation undo;
    Operation redo;
};

/// Port to what keeps a person's actions. Thread: main.
class CalendarActionRecorder {
  public:
    virtual ~CalendarActionRecorder() = default;

    /// An action is under way; gives a number for end().
    [[nodiscard]] virtual int begin() = 0;
    virtual void record(CalendarAction action) = 0;
    /// To be called once, after the action was recorded, or when it has failed.
    virtual void end(int action, bool succeeded) = 0;
};

}  // namespace kestrant
