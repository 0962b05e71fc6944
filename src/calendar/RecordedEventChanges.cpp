#include "calendar/RecordedEventChanges.h"

#include "calendar/CalendarActionRecorder.h"
#include "calendar/CalendarStoreServices.h"

#include <QPointer>

#include <utility>

namespace kestrant {
namespace {

bool isUnknown(const tl::expected<EKSaveResult, EKError>& result) {
    return !result && result.error().code == EKError::Code::outcomeUnknown;
}

}  // namespace

RecordedEventChangeRef RecordedEventChanges::begin(const TextPair& title, const TextPair& outcome) {
    auto recorded = std::make_shared<RecordedEventChange>();
    recorded->title = title;
    recorded->outcome = outcome;
    if (services_.actions)
        recorded->action = services_.actions->begin();
    return recorded;
}

void RecordedEventChanges::end(const RecordedEventChangeRef& recorded, const Result& result,
                               std::function<void(const Result& known)> whenKnown) {
    if (isUnknown(result)) {
        services_.eventStore.awaitOutcome(
            result.error(),
            [self = QPointer(this), recorded, whenKnown = std::move(whenKnown)](const Result& known) {
                if (!self)
                    return;
                self->end(recorded, known);
                if (whenKnown)
                    whenKnown(known);
                if (self)
                    Q_EMIT self->outdated();
            });
        return;
    }
    if (!recorded->action)
        return;
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

void RecordedEventChanges::replay(const RecordedEventChangeRef& recorded, const CalendarAction::Done& done) {
    services_.eventStore.revert(recorded->change, recorded->item->identifier,
                                [self = QPointer(this), recorded, done](const Result& result) {
                                    if (!self)
                                        return;
                                    if (isUnknown(result))
                                        self->services_.eventStore.awaitOutcome(
                                            result.error(), [self, recorded, done](const Result& known) {
                                                if (self)
                                                    self->endReplay(*recorded, known, done);
                                            });
                                    self->endReplay(*recorded, result, done);
                                });
}

void RecordedEventChanges::endReplay(RecordedEventChange& recorded, const Result& result,
                                     const CalendarAction::Done& done) {
    if (!result) {
        Q_EMIT outdated();
        done(tl::unexpected(result.error()));
        return;
    }
    recorded.change = result->change;
    references_.follow(recorded.item, result->calendarItemIdentifier);
    Q_EMIT replayed();
    done({});
}

}  // namespace kestrant
