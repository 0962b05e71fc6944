#include "cli/CalendarCommands.h"

#include "calendar/CalendarEditing.h"
#include "calendar/CalendarRows.h"
#include "calendar/SpokenEvent.h"
#include "cli/CalendarOutput.h"
#include "reminders/quickadd/QuickAddParser.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace kestrant {

namespace {

using Command = CommandLineArguments::Command;
using ErrorCode = CalendarError::Code;

/// The year 9999 has ended, in seconds since 1970.
constexpr double latestStart = 253'402'400'000;

/// The start that the row key of an event ends with.
std::optional<Instant> startOfRow(const QString& rowID) {
    const qsizetype separator = rowID.lastIndexOf(u'_');
    bool isNumber = false;
    const double seconds = rowID.mid(separator + 1).toDouble(&isNumber);
    if (separator < 0 || !isNumber || !(std::abs(seconds) < latestStart))
        return std::nullopt;
    const Instant start = instantFromSecondsSince1970(seconds);
    return eventRowID(rowID.left(separator), start) == rowID ? std::optional(start) : std::nullopt;
}

}  // namespace

CalendarCommands::CalendarCommands(CommandRun& run)
    : run_(run)
    , store_({.eventStore = run.eventStore,
              .openReminders = run.openReminders,
              .scheduler = run.scheduler,
              .clock = run.clock,
              .currentZone = run.currentZone,
              .preferences = run.preferences,
              .notifications = run.notifications,
              .executor = executor_,
              .locale = [&run] { return run.environment.systemLocale; },
              .clearReminderDueDate = {}}) {
    if (run.arguments.showsReminders)
        run.preferences.showRemindersInCalendar.set(*run.arguments.showsReminders);
    store_.setShowsAllEvents(run.arguments.allEvents);
}

void CalendarCommands::start() {
    const auto proceedLater = [this](auto signal) {
        // Queued, so that the store has come to rest.
        QObject::connect(
            &store_, signal, &store_, [this] { proceed(); }, Qt::QueuedConnection);
    };
    proceedLater(&CalendarStore::accessStateChanged);
    proceedLater(&CalendarStore::isLoadingChanged);
    store_.requestAccess();
}

void CalendarCommands::proceed() {
    using Kind = CalendarAccessState::Kind;
    const CalendarAccessState& state = store_.accessState();
    if (hasBegun_ || state.kind == Kind::requesting || store_.isLoading())
        return;
    hasBegun_ = true;
    if (state.kind != Kind::authorized) {
        run_.refuse(state.kind == Kind::failed ? state.message
                                               : CalendarError{ErrorCode::notAuthorized, {}}.message());
        return;
    }
    run_.printProblems();
    if (run_.hasAnswer(EKEntityType::event, {}))
        execute();
    else
        run_.finish(refused);
}

void CalendarCommands::execute() {
    switch (run_.arguments.command) {
    case Command::agenda:
        printAgenda();
        return;
    case Command::calendars:
        run_.printCalendars(EKEntityType::event);
        run_.finishReading();
        return;
    case Command::addEvent:
        addEvent();
        return;
    case Command::deleteEvent:
        deleteEvent();
        return;
    default:
        return;
    }
}

void CalendarCommands::printAgenda() {
    if (const auto shortage = store_.shortage())
        run_.printError(*shortage);
    if (run_.arguments.json)
        run_.printJson(dayGroupsAsJson(store_.dayGroups()));
    else
        run_.print(dayGroupsAsText(store_.dayGroups(),
                                   store_.showsAllEvents() ? CalendarMode::full : CalendarMode::compact,
                                   run_.outputContext()));
    run_.finishReading();
}

bool CalendarCommands::isEventCalendar(const QString& identifier) const {
    const std::vector<EKCalendar> calendars = run_.eventStore.calendars(EKEntityType::event);
    return std::any_of(calendars.begin(), calendars.end(),
                       [&](const EKCalendar& calendar) { return calendar.calendarIdentifier == identifier; });
}

void CalendarCommands::addEvent() {
    const CommandLineArguments& arguments = run_.arguments;
    if (!arguments.start) {
        lines_ = run_.linesToAdd();
        addNextLine();
        return;
    }
    const TimeZone& zone = run_.environment.zone;
    NewCalendarEvent event{.title = arguments.subjects.first(),
                           .startDate = arguments.start->instant,
                           .endDate = arguments.start->instant,
                           .isAllDay = arguments.isAllDay};
    if (arguments.end) {
        event.endDate = arguments.end->instant;
        if (arguments.isAllDay)
            event.endDate = zone.startOfDay(zone.dayOf(event.endDate).addDays(1));
        if (event.endDate <= event.startDate && !arguments.end->isAfter(*arguments.start)) {
            run_.refuse(CalendarError{ErrorCode::invalidDateRange, {}}.message());
            return;
        }
    }
    save(event, [this](bool isSaved) { run_.finish(isSaved ? done : refused); });
}

void CalendarCommands::addNextLine() {
    if (lines_.isEmpty()) {
        run_.finish(hasFailed_ ? refused : done);
        return;
    }
    const QString typed = lines_.takeFirst();
    std::vector<EKCalendar> calendars = run_.eventStore.calendars(EKEntityType::event);
    std::erase_if(calendars, [](const EKCalendar& calendar) { return !calendar.allowsContentModifications; });
    const speech::Present present = presentFor({.now = run_.clock.now(),
                                                .zone = run_.environment.zone,
                                                .language = run_.localization.language(),
                                                .lists = {},
                                                .locale = run_.environment.systemLocale});
    const SpokenEvent spoken = readEvent(typed, present, calendars);
    const auto goOn = [this](bool isSaved) {
        hasFailed_ = hasFailed_ || !isSaved;
        addNextLine();
    };
    if (!spoken.event) {
        const TextPair message =
            spoken.line.title.isEmpty()
                ? text("“%1”: an event needs a title beside its time.",
                       "« %1 » : un événement demande un titre avec son heure.")
                : text("“%1” does not say when; write a day or a time in it, or --start.",
                       "« %1 » ne dit pas quand ; écrivez-y un jour ou une heure, ou --start.");
        run_.printError({message.english.arg(typed), message.french.arg(typed)});
        return goOn(false);
    }
    if (!spoken.unknownCalendar.isEmpty())
        run_.printError(CommandRun::unknownList(spoken.unknownCalendar));
    if (!run_.arguments.json)
        run_.environment.err(eventAsTable(*spoken.event, calendars, run_.outputContext()));
    save(*spoken.event, goOn);
}

void CalendarCommands::save(const NewCalendarEvent& event, const std::function<void(bool isSaved)>& done) {
    const auto refuse = [this, done](const TextPair& reason) {
        run_.printError(reason);
        done(false);
    };
    auto data = newEventData(event, run_.environment.zone);
    if (!data)
        return refuse(data.error().message());
    if (const auto& calendar = run_.arguments.calendarID ? run_.arguments.calendarID : event.calendarID) {
        if (!isEventCalendar(*calendar))
            return refuse(CalendarError{ErrorCode::calendarUnavailable, {}}.message());
        data->calendarIdentifier = *calendar;
    }
    const auto created = std::make_shared<EKEvent>();
    created->data = std::move(*data);
    run_.eventStore.save(created, EKSpan::thisEvent,
                         [this, created, refuse, done](const tl::expected<EKSaveResult, EKError>& result) {
                             if (!result)
                                 return refuse(result.error().message);
                             run_.printIdentifier(
                                 eventRowID(result->calendarItemIdentifier, created->data.startDate));
                             done(true);
                         });
}

void CalendarCommands::deleteEvent() {
    const auto start = startOfRow(run_.arguments.subjects.first());
    if (!start) {
        deleteRowAmong({});
        return;
    }
    fetchCalendarItems(*start, *start + Duration(1), run_.eventStore, nullptr, run_.environment.zone,
                       [this](const CalendarItems& items) { deleteRowAmong(items); });
}

void CalendarCommands::deleteRowAmong(const CalendarItems& items) {
    for (const auto& event : items.events) {
        const CalendarEventItem row = eventRow(*event, nullptr, run_.localization.language());
        if (row.id != run_.arguments.subjects.first())
            continue;
        store_.deleteItem(row, [this](const tl::expected<void, CalendarError>& result) {
            if (!result) {
                run_.refuse(result.error().message());
                return;
            }
            if (run_.arguments.json)
                run_.printIdentifier(run_.arguments.subjects.first());
            run_.finish();
        });
        return;
    }
    if (const auto reminder = reminderIdentifier(run_.arguments.subjects.first())) {
        const TextPair message = text("This row is a reminder; delete it with kestrant delete %1.",
                                      "Cette ligne est un rappel ; supprimez-le avec kestrant delete %1.");
        run_.refuse({message.english.arg(*reminder), message.french.arg(*reminder)});
        return;
    }
    run_.refuse(run_.notFound(EKEntityType::event, CalendarError{ErrorCode::itemNotFound, {}}.message()));
}

}  // namespace kestrant
