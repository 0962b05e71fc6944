#include "ui/DemoData.h"

#include <array>
#include <memory>
#include <utility>

namespace kestrant {
namespace {

struct DemoList {
    TextPair title;
    Color color;
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
};

enum : std::size_t { personal, work, home, papers, someday };

std::vector<DemoList> demoLists() {
    return {{text("Personal", "Personnel"), {0x0a, 0x84, 0xff}},
            {text("Work", "Travail"), {0xff, 0x45, 0x3a}},
            {text("Home", "Maison"), {0x30, 0xd1, 0x58}},
            {text("Paperwork", "Papiers"), {0xbf, 0x5a, 0xf2}},
            {text("Someday", "Un jour"), {0x8e, 0x8e, 0x93}}};
}

std::vector<DemoReminder> demoReminders() {
    return {
        {work, text("Send the signed lease back to Maren", "Renvoyer le bail signé à Maren"), -1, {}, 1},
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
         5},
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

/// Saves one thing after the other; owns itself through the completions it waits for.
class DemoWriter : public std::enable_shared_from_this<DemoWriter> {
  public:
    DemoWriter(EKEventStore& store, Instant now, const ZoneCalendar& calendar, Language language,
               std::function<void(std::optional<EKError>)> done)
        : store_(store)
        , now_(now)
        , calendar_(calendar)
        , language_(language)
        , done_(std::move(done)) {}

    void saveNextList() {
        if (listIDs_.size() == lists_.size()) {
            saveNextReminder();
            return;
        }
        const DemoList& list = lists_[listIDs_.size()];
        EKCalendar calendar;
        calendar.title = list.title.in(language_);
        calendar.color = list.color;
        store_.saveCalendar(calendar,
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
        if (next_ == reminders_.size()) {
            done_({});
            return;
        }
        const EKReminderRef reminder = built(reminders_[next_++]);
        store_.save(reminder, [self = shared_from_this()](const tl::expected<EKSaveResult, EKError>& saved) {
            if (!saved)
                self->done_(saved.error());
            else
                self->saveNextReminder();
        });
    }

    [[nodiscard]] EKReminderRef built(const DemoReminder& demo) const {
        auto reminder = std::make_shared<EKReminder>(store_);
        EKReminderData& data = reminder->data;
        data.calendarIdentifier = listIDs_[demo.list];
        data.title = demo.title.in(language_);
        data.priority = demo.priority;
        if (demo.day) {
            const QDate day = calendar_.dayOf(now_).addDays(*demo.day);
            data.dueDateComponents = demo.time.isValid() ? DateComponents::fromDateTime(day, demo.time)
                                                         : DateComponents::fromDate(day);
            if (demo.alertMinutesBefore)
                data.alarms = {EKAlarm::at(calendar_.instantAt(day, demo.time) -
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
    ZoneCalendar calendar_;
    Language language_;
    std::function<void(std::optional<EKError>)> done_;
    std::vector<DemoList> lists_ = demoLists();
    std::vector<DemoReminder> reminders_ = demoReminders();
    std::vector<QString> listIDs_;
    std::size_t next_ = 0;
};

}  // namespace

void addDemoReminders(EKEventStore& store, Instant now, const ZoneCalendar& calendar, Language language,
                      std::function<void(std::optional<EKError> error)> done) {
    std::make_shared<DemoWriter>(store, now, calendar, language, std::move(done))->saveNextList();
}

}  // namespace kestrant
