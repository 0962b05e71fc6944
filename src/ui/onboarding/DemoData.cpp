#include "ui/onboarding/DemoData.h"

#include <array>
#include <memory>
#include <utility>

namespace kestrant {
namespace {

struct DemoList {
    TextPair title;
    Color color;
    bool allowsReminders = true;
};

struct DemoReminder {
    std::size_t list;
    TextPair title;
    /// Days from today; absent without a due date.
    std::optional<int> day;
    QTime time;
    int priority = 0;
    const char* recurrence = nullptr;
    std::optional<int> alertMinutesBefore;
    bool isFlagged = false;
};

struct DemoEvent {
    std::size_t list;
    TextPair title;
    /// Days from today.
    int day;
    /// Without a start, the length counts days.
    QTime start;
    int length;
    TextPair place = {};
    const char* recurrence = nullptr;
};

enum : std::size_t { personal, work, home, papers, someday, birthdays };

std::vector<DemoList> demoLists() {
    return {{text("Personal", "Personnel"), {0x0a, 0x84, 0xff}},
            {text("Work", "Travail"), {0xff, 0x45, 0x3a}},
            {text("Home", "Maison"), {0x30, 0xd1, 0x58}},
            {text("Paperwork", "Papiers"), {0xbf, 0x5a, 0xf2}},
            {text("Someday", "Un jour"), {0x8e, 0x8e, 0x93}},
            {text("Birthdays", "Anniversaires"), {0xff, 0x9f, 0x0a}, false}};
}

std::vector<DemoReminder> demoReminders() {
    return {
        {work,
         text("Send the signed lease back to Maren", "Renvoyer le bail signé à Maren"),
         -1,
         {},
         1,
         nullptr,
         {},
         true},
        {personal, text("Water the plants", "Arroser les plantes"), 0, {}},
        {home, text("Buy oat milk, basil, lemons", "Acheter lait d’avoine, basilic, citrons"), 0, {}},
        {personal,
         text("Review slides for Tuesday’s planning", "Relire les diapos de la réunion de mardi"),
         0,
         {17, 0},
         0,
         nullptr,
         15},
        {papers,
         text("Prepare dossier for the residence permit", "Préparer le dossier du titre de séjour"),
         1,
         {9, 0},
         5,
         nullptr,
         {},
         true},
        {home,
         text("Bike: new brake pads", "Vélo : changer les plaquettes de frein"),
         2,
         {},
         0,
         "FREQ=YEARLY"},
        {personal,
         text("Call Ilse about the summer house", "Appeler Ilse pour la maison d’été"),
         4,
         {18, 30},
         9},
        {personal, text("Return the library books", "Rendre les livres à la bibliothèque"), 5, {}},
        {home, text("Read the water meter", "Relever le compteur d’eau"), 9, {12, 0}, 0, "FREQ=MONTHLY"},
        {personal, text("Read chapter 4", "Lire le chapitre 4"), 14, {}},
        {papers, text("Renew the passport", "Renouveler le passeport"), 55, {}, 5},
        {papers, text("Book the dentist", "Prendre rendez-vous chez le dentiste"), {}, {}},
        {someday,
         text("Ideas for the garden wall in spring, with quotes from three builders",
              "Idées pour le mur du jardin au printemps, avec les devis de trois artisans"),
         {},
         {}},
        {home, text("Sharpen the kitchen knives", "Aiguiser les couteaux de cuisine"), {}, {}},
    };
}

std::vector<DemoEvent> demoEvents(QDate today) {
    std::vector<DemoEvent> events{
        {birthdays, text("Léa’s birthday", "Anniversaire de Léa"), 0, {}, 1},
        {home, text("Farmers’ market", "Marché"), 0, {9, 0}, 75, text("Old harbour", "Vieux port")},
        {personal, text("Piano lesson", "Cours de piano"), 0, {14, 0}, 60},
        {home, text("Dinner at Tomas’s", "Dîner chez Tomas"), 0, {19, 30}, 150},
        {work,
         text("Run with the club", "Course avec le club"),
         1,
         {10, 30},
         90,
         text("Lakeside park, north gate", "Parc du lac, entrée nord")},
        {personal, text("Weekly planning", "Point de la semaine"), 2, {9, 15}, 45},
        {work,
         text("Lunch with the new team", "Déjeuner avec la nouvelle équipe"),
         2,
         {12, 15},
         75,
         text("Canteen", "Cantine")},
        {work, text("Tuesday’s planning", "Réunion de mardi"), 3, {14, 0}, 90, text("Room 4", "Salle 4")},
        {home, text("Long weekend in Annecy", "Long week-end à Annecy"), 5, {}, 3},
        {personal,
         text("Night train home", "Train de nuit pour rentrer"),
         7,
         {21, 40},
         640,
         text("Track 8", "Voie 8")},
        {personal,
         text("Dentist", "Dentiste"),
         -1,
         {8, 30},
         45,
         text("12 Station Road", "12, rue de la Gare")},
        {work, text("Quarterly review", "Revue trimestrielle"), -2, {10, 0}, 120, text("Room 1", "Salle 1")},
        {home, text("Boiler inspection", "Entretien de la chaudière"), -23, {11, 0}, 60},
        {personal, text("Concert", "Concert"), 38, {20, 0}, 150, text("Victoria Hall", "Victoria Hall")},
        {home, text("Holiday by the sea", "Vacances à la mer"), 128, {}, 14},
    };
    const int nextWednesday = (3 - today.dayOfWeek() + 7) % 7;
    events.push_back({personal,
                      text("Choir", "Chorale"),
                      nextWednesday - 700,
                      {19, 0},
                      90,
                      text("Music school", "École de musique"),
                      "FREQ=WEEKLY"});
    return events;
}

/// Saves one thing after the other; owns itself through the completions it waits for.
class DemoWriter : public std::enable_shared_from_this<DemoWriter> {
  public:
    DemoWriter(EKEventStore& store, Instant now, const TimeZone& zone, Language language,
               std::function<void(std::optional<EKError>)> done)
        : store_(store)
        , now_(now)
        , zone_(zone)
        , language_(language)
        , done_(std::move(done))
        , events_(demoEvents(zone.dayOf(now))) {}

    void saveNextList() {
        if (listIDs_.size() == lists_.size()) {
            saveNextReminder();
            return;
        }
        const DemoList& list = lists_[listIDs_.size()];
        EKCalendar zone;
        zone.title = list.title.in(language_);
        zone.color = list.color;
        zone.allowsReminders = list.allowsReminders;
        zone.allowsEvents = true;
        store_.saveCalendar(zone,
                            [self = shared_from_this()](const tl::expected<EKCalendar, EKError>& saved) {
                                if (!saved) {
                                    self->done_(saved.error());
                                    return;
                                }
                                self->listIDs_.push_back(saved->calendarIdentifier);
                                self->saveNextList();
                            });
    }

  private:
    void saveNextReminder() {
        if (nextReminder_ == reminders_.size()) {
            saveNextEvent();
            return;
        }
        const EKReminderRef reminder = built(reminders_[nextReminder_++]);
        store_.save(reminder, [self = shared_from_this()](const tl::expected<EKSaveResult, EKError>& saved) {
            if (!saved)
                self->done_(saved.error());
            else
                self->saveNextReminder();
        });
    }

    void saveNextEvent() {
        if (nextEvent_ == events_.size()) {
            done_({});
            return;
        }
        const auto event = std::make_shared<EKEvent>();
        event->data = built(events_[nextEvent_++]);
        store_.save(event, EKSpan::thisEvent,
                    [self = shared_from_this()](const tl::expected<EKSaveResult, EKError>& saved) {
                        if (!saved)
                            self->done_(saved.error());
                        else
                            self->saveNextEvent();
                    });
    }

    [[nodiscard]] EKEventData built(const DemoEvent& demo) const {
        EKEventData data;
        data.calendarIdentifier = listIDs_[demo.list];
        data.title = demo.title.in(language_);
        if (!demo.place.english.isEmpty())
            data.location = demo.place.in(language_);
        const QDate day = zone_.dayOf(now_).addDays(demo.day);
        data.isAllDay = !demo.start.isValid();
        if (data.isAllDay) {
            data.startDate = zone_.startOfDay(day);
            data.endDate = zone_.startOfDay(day.addDays(demo.length));
        } else {
            data.startDate = zone_.instantAt(day, demo.start);
            data.endDate = data.startDate + std::chrono::minutes(demo.length);
            data.timeZone = zone_;
        }
        if (demo.recurrence)
            data.recurrenceRules = {EKRecurrenceRule::parse(QString::fromUtf8(demo.recurrence))};
        return data;
    }

    [[nodiscard]] EKReminderRef built(const DemoReminder& demo) const {
        auto reminder = std::make_shared<EKReminder>(store_);
        EKReminderData& data = reminder->data;
        data.calendarIdentifier = listIDs_[demo.list];
        data.title = demo.title.in(language_);
        data.priority = demo.priority;
        data.isFlagged = demo.isFlagged;
        if (demo.day) {
            const QDate day = zone_.dayOf(now_).addDays(*demo.day);
            data.dueDateComponents = demo.time.isValid() ? DateComponents::fromDateTime(day, demo.time)
                                                         : DateComponents::fromDate(day);
            if (demo.alertMinutesBefore)
                data.alarms = {EKAlarm::at(zone_.instantAt(day, demo.time) -
                                           std::chrono::minutes(*demo.alertMinutesBefore))};
        }
        if (demo.recurrence) {
            data.startDateComponents = data.dueDateComponents;
            data.recurrenceRules = {EKRecurrenceRule::parse(QString::fromUtf8(demo.recurrence))};
        }
        return reminder;
    }

    EKEventStore& store_;
    Instant now_;
    TimeZone zone_;
    Language language_;
    std::function<void(std::optional<EKError>)> done_;
    std::vector<DemoList> lists_ = demoLists();
    std::vector<DemoReminder> reminders_ = demoReminders();
    std::vector<QString> listIDs_;
    std::size_t nextReminder_ = 0;
    std::vector<DemoEvent> events_;
    std::size_t nextEvent_ = 0;
};

}  // namespace

void addDemoData(EKEventStore& store, Instant now, const TimeZone& zone, Language language,
                 std::function<void(std::optional<EKError> error)> done) {
    std::make_shared<DemoWriter>(store, now, zone, language, std::move(done))->saveNextList();
}

}  // namespace kestrant
