#include "calendar/RecordedEventChanges.h"

#include "calendar/CalendarActionRecorder.h"
#include "calendar/CalendarStoreServices.h"

#include <QPointer>

#include <utility>

namespace kestrant {

RecordedEventChangeRef RecordedEventChanges::begin(const TextPair& title, const TextPair& outcome) {
    auto recorded = std::make_shared<RecordedEventChange>();
    recorded->title = title;
    recorded->outcome = outcome;
    if (services_.actions)
        recorded->action = services_.actions->begin();
    return recorded;
}

void RecordedEventChanges::end(const RecordedEventChangeRef& recorded, const QString& identifier,
                               const tl::expected<EKSaveResult, EKError>& result) {
    if (!recorded->action)
        return;
    if (!result && result.error().code == EKError::Code::outcomeUnknown && !identifier.isEmpty()) {
        services_.eventStore.awaitOutcome(identifier, [self = QPointer(this), recorded, identifier](
                                                          const tl::expected<EKSaveResult, EKError>& known) {
            if (!self)
                return;
            self->end(recorded, identifier, known);
            Q_EMIT self->outdated();
        });
        return;
    }
    if (result && result->change) {
        recorded->change = result->change;
        recorded->item = references_.to(result->calendarItemIdentifier);
        const auto replay = [self = QPointer(this), recorded](const CalendarAction::Done& done) {
            if (self)
                self->replay(recorded, done);
            else
                done({});
        };
        services_.actions->record({recorded->title, recorded->outcome, replay, replay});
    }
    services_.actions->end(*std::exchange(recorded->action, std::nullopt), result.has_value());
}

void RecordedEventChanges::replay(const RecordedEventChangeRef& recorded,
                                  const std::function<void(tl::expected<void, EKError>)>& done) {
    services_.eventStore.revert(
        recorded->change, recorded->item->identifier,
        [self = QPointer(this), recorded, done](const tl::expected<EKSaveResult, EKError>& result) {
            if (!self)
                return;
            if (!result) {
                Q_EMIT self->outdated();
                done(tl::unexpected(result.error()));
                return;
            }
            recorded->change = result->change;
            self->references_.follow(recorded->item, result->calendarItemIdentifier);
            Q_EMIT self->replayed();
            done({});
        });
}

}  // namespace kestrant
