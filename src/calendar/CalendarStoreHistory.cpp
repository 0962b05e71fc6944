#include "calendar/CalendarActionRecorder.h"
#include "calendar/CalendarStorePrivate.h"

#include <utility>

namespace kestrant {

/// A change of an item that was written, or is being written.
struct CalendarStore::Private::RecordedChange {
    TextPair title;
    TextPair outcome;
    std::optional<int> action;
    /// What the item is called now.
    std::shared_ptr<QString> identifier;
    /// What the next replay takes back.
    std::shared_ptr<const EKItemChange> change;
};

TextPair CalendarStore::Private::outcomeOf(const TextPair& sentence, const QString& title,
                                           OutcomeSubject subject) {
    const QString name = title.simplified();
    constexpr qsizetype longest = 60;
    const QString shown = name.size() > longest ? name.first(longest - 1) + u'…' : name;
    const bool isOne = subject == OutcomeSubject::oneOfSeries;
    return {sentence.english.arg(shown) +
                (isOne ? QStringLiteral(", only this one of its series") : QString()),
            sentence.french.arg(shown) +
                (isOne ? QStringLiteral(", seulement celui-ci de sa série") : QString())};
}

std::shared_ptr<QString> CalendarStore::Private::referenceTo(const QString& identifier) {
    std::erase_if(references, [](const auto& entry) { return entry.second.expired(); });
    if (const auto known = references.find(identifier); known != references.end())
        return known->second.lock();
    auto reference = std::make_shared<QString>(identifier);
    references[identifier] = reference;
    return reference;
}

CalendarStore::Private::RecordedChangeRef CalendarStore::Private::beginAction(const TextPair& title,
                                                                              const TextPair& outcome) {
    auto recorded = std::make_shared<RecordedChange>();
    recorded->title = title;
    recorded->outcome = outcome;
    if (services.actions)
        recorded->action = services.actions->begin();
    return recorded;
}

void CalendarStore::Private::endAction(const RecordedChangeRef& recorded, const QString& identifier,
                                       const tl::expected<EKSaveResult, EKError>& result) {
    if (!recorded->action)
        return;
    if (!result && result.error().code == EKError::Code::outcomeUnknown && !identifier.isEmpty()) {
        services.eventStore.awaitOutcome(
            identifier, whileAlive([recorded, identifier](Private& self,
                                                          const tl::expected<EKSaveResult, EKError>& known) {
                self.endAction(recorded, identifier, known);
                self.reload();
            }));
        return;
    }
    if (result && result->change) {
        recorded->change = result->change;
        recorded->identifier = referenceTo(result->calendarItemIdentifier);
        const auto replay = [weak = weak_from_this(), recorded](const CalendarAction::Done& done) {
            if (const auto self = weak.lock())
                self->replay(recorded, done);
            else
                done({});
        };
        services.actions->record({recorded->title, recorded->outcome, replay, replay});
    }
    services.actions->end(*std::exchange(recorded->action, std::nullopt), result.has_value());
}

void CalendarStore::Private::replay(const RecordedChangeRef& recorded,
                                    const std::function<void(tl::expected<void, EKError>)>& done) {
    services.eventStore.revert(
        recorded->change, *recorded->identifier,
        whileAlive([recorded, done](Private& self, const tl::expected<EKSaveResult, EKError>& result) {
            if (!result) {
                self.reload();
                done(tl::unexpected(result.error()));
                return;
            }
            recorded->change = result->change;
            const QString& identifier = result->calendarItemIdentifier;
            if (*recorded->identifier != identifier) {
                *recorded->identifier = identifier;
                self.references[identifier] = recorded->identifier;
            }
            self.changed(eventChangedNotification, {});
            done({});
        }));
}

}  // namespace kestrant
