#pragma once

#include "calendar/CalendarActionRecorder.h"
#include "eventkit/model/EKEventStore.h"
#include "eventkit/model/HistoryReferences.h"
#include "foundation/Text.h"

#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>
#include <memory>
#include <optional>

namespace kestrant {

struct CalendarStoreServices;

/// A change of an event or reminder of the calendar that was written, or is being written.
struct RecordedEventChange {
    TextPair title;
    TextPair outcome;
    std::optional<int> action;
    /// The item's present identifier.
    HistoryReferenceRef item;
    /// The change that the next replay reverts.
    std::shared_ptr<const EKItemChange> change;
};
using RecordedEventChangeRef = std::shared_ptr<RecordedEventChange>;

/// Records the changes of the calendar once they have been written, and takes them back or makes them again.
/// Thread: main.
class RecordedEventChanges : public QObject {
    Q_OBJECT

  public:
    /// The services outlive this object.
    explicit RecordedEventChanges(const CalendarStoreServices& services) : services_(services) {}

    /// For a change that is about to be written.
    [[nodiscard]] RecordedEventChangeRef begin(const TextPair& title, const TextPair& outcome);
    using Result = tl::expected<EKSaveResult, EKError>;
    /// Records it if it was written, at once or when that is known; `whenKnown`, which may be empty, is
    /// called in the latter case.
    void end(const RecordedEventChangeRef& recorded, const Result& result,
             std::function<void(const Result& known)> whenKnown = {});

  Q_SIGNALS:
    /// A replay has changed the calendar.
    void replayed();
    /// The database may hold something else than is shown.
    void outdated();

  private:
    void replay(const RecordedEventChangeRef& recorded, const CalendarAction::Done& done);
    void endReplay(RecordedEventChange& recorded, const Result& result, const CalendarAction::Done& done);

    const CalendarStoreServices& services_;
    HistoryReferences references_;
};

}  // namespace kestrant
