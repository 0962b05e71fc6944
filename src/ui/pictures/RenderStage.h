#pragma once

#include "completion/CompletionLedgerRepository.h"
#include "eventkit/memory/InMemoryEventStore.h"
#include "feedback/Feedback.h"
#include "foundation/BackgroundExecutor.h"
#include "foundation/CurrentCalendars.h"
#include "foundation/NotificationCenter.h"
#include "notch/NotchGeometry.h"
#include "notch/NotchInteractionModel.h"
#include "preferences/Localization.h"
#include "preferences/PreferenceKeys.h"
#include "reminders/FlaggedReminderAutomation.h"
#include "reminders/ScriptHost.h"
#include "services/LaunchAtLoginManager.h"
#include "ui/onboarding/DemoData.h"
#include "ui/onboarding/OnboardingTrial.h"
#include "ui/onboarding/OnboardingViewModel.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/panel/Appearance.h"
#include "ui/panel/Localizer.h"
#include "ui/panel/PanelComposition.h"
#include "ui/panel/PanelView.h"
#include "ui/settings/SettingsViewModel.h"

#include <QDir>
#include <QGuiApplication>
#include <QJsonObject>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QSize>
#include <QTemporaryDir>

#include <algorithm>
#include <deque>

namespace kestrant {

/// Points that a picture covers, the panel at its upper edge.
inline constexpr QSize pictureSize(1060, 720);

/// Time that moves only when it is told to.
class PictureTime : public Clock, public Scheduler {
  public:
    explicit PictureTime(Instant now) : now_(now) {}

    [[nodiscard]] Instant now() const override { return now_; }
    [[nodiscard]] ScheduledTask after(Duration delay, std::function<void()> work) override {
        auto state = std::make_shared<ScheduledTask::State>();
        state->work = std::move(work);
        waiting_.push_back({now_ + delay, state});
        return ScheduledTask(state);
    }
    /// Pictures show no moment of repeating work.
    [[nodiscard]] ScheduledTask every(Duration, std::function<void()>) override { return {}; }
    void post(std::function<void()> work) override { posted_.push_back(std::move(work)); }

    /// Runs what is due by then, and what that posts.
    void advance(Duration duration) {
        const Instant end = now_ + duration;
        for (;;) {
            if (!posted_.empty()) {
                const auto work = std::move(posted_.front());
                posted_.pop_front();
                work();
                continue;
            }
            const auto next = std::min_element(waiting_.begin(), waiting_.end(),
                                               [](const auto& a, const auto& b) { return a.due < b.due; });
            if (next == waiting_.end() || next->due > end)
                break;
            now_ = std::max(now_, next->due);
            const auto state = next->state;
            waiting_.erase(next);
            if (std::exchange(state->pending, false))
                state->work();
        }
        now_ = end;
    }

  private:
    struct Waiting {
        Instant due;
        std::shared_ptr<ScheduledTask::State> state;
    };
    Instant now_;
    std::vector<Waiting> waiting_;
    std::deque<std::function<void()>> posted_;
};

class PictureDefaults : public UserDefaults {
  public:
    [[nodiscard]] QJsonValue object(const QString& key) const override { return values_.value(key); }
    void set(const QString& key, const QJsonValue& value) override {
        values_.insert(key, value);
        observers_.notify(key);
    }
    [[nodiscard]] Subscription observe(std::function<void(const QString&)> observer) override {
        return observers_.add(std::move(observer));
    }

  private:
    QJsonObject values_;
    ObserverList<QString> observers_;
};

/// A desktop that starts the program when it is told to.
class PictureLoginItem : public LoginItem {
  public:
    [[nodiscard]] bool isEnabled() const override { return enabled_; }
    [[nodiscard]] tl::expected<void, TextPair> setEnabled(bool enabled) override {
        enabled_ = enabled;
        return {};
    }

  private:
    bool enabled_ = true;
};

/// The scripted application: flags as the database has them, or no answer at all.
class PictureScripts : public ScriptHost {
  public:
    explicit PictureScripts(const InMemoryEventStore& database) : database_(database) {}

    void fail() { fails_ = true; }
    [[nodiscard]] tl::expected<QStringList, ScriptError> execute(const ReminderScript&) override {
        if (fails_)
            return tl::unexpected(ScriptError{ScriptError::Code::timedOut, {}});
        QStringList flagged;
        for (const EKReminderData& reminder : database_.reminders()) {
            if (reminder.isFlagged)
                flagged.append(QStringLiteral("x-kestrant-reminder://") + reminder.calendarItemIdentifier);
        }
        return flagged;
    }
    void interrupt() override {}

  private:
    const InMemoryEventStore& database_;
    bool fails_ = false;
};

/// What a picture shows, below the panel.
struct StageGround {
    StageGround(Language language, double screenWidth)
        : geometry(Screen{.name = QStringLiteral("picture"), .frame = QRectF(0, 0, screenWidth, 982)}) {
        preferences.setLanguage(language);
        appearance.setReducedMotion(true);
        interaction.setExpansionEnabled(true);
    }

    /// Saturday 21 November 2026, 14:30 in Paris.
    PictureTime time{std::chrono::sys_days{std::chrono::year(2026) / 11 / 21} +
                     std::chrono::minutes(13 * 60 + 30)};
    FixedCurrentCalendar calendar{ZoneCalendar(*TimeZone::named("Europe/Paris"))};
    PictureDefaults defaults;
    Preferences preferences{defaults, [] { return QLocale(QLocale::English, QLocale::UnitedKingdom); }};
    Localization localization{preferences};
    SilentCuePlayer cues;
    SilentHapticPerformer haptics;
    Feedback feedback{preferences, cues, haptics};
    NotificationCenter notifications;
    InMemoryEventStore database{time, time, calendar};
    QTemporaryDir folder;
    CompletionLedgerRepository ledger{folder.filePath(QStringLiteral("ledger.json"))};
    ImmediateExecutor executor;
    PictureScripts scripts{database};
    FlaggedReminderAutomation automation{scripts, executor, time};
    NotchInteractionModel interaction{time, preferences, feedback};
    NotchGeometry geometry;
    Localizer localizer{localization};
    Appearance appearance{nullptr};
    PanelComposition::Services services{
        .eventStore = database,
        .scheduler = time,
        .clock = time,
        .calendar = calendar,
        .preferences = preferences,
        .localization = localization,
        .localizer = localizer,
        .notifications = notifications,
        .ledger = ledger,
        .executor = executor,
        .locale = [] { return QLocale(QLocale::English, QLocale::UnitedKingdom); },
        .feedback = feedback,
        .interaction = interaction,
        .geometry = geometry,
        .flags = &automation};
};

/// What one picture needs of the program, from the database to the window.
struct Stage : StageGround, PanelComposition {
    explicit Stage(Language language, double screenWidth = 1512)
        : StageGround(language, screenWidth)
        , PanelComposition(services) {
        view.overlays().setRoomHeight(pictureSize.height());
    }

    HttpSession session{time};
    FeedbackAPIClient feedbackClient{InformationDictionary(), session};
    FeedbackViewModel feedbackForm{[this]() -> FeedbackAPIClient& { return feedbackClient; }, localizer};
    PictureLoginItem loginItem;
    LaunchAtLoginManager launchAtLogin{loginItem, defaults};
    SettingsViewModel settings{
        preferences,
        localizer,
        feedbackForm,
        {.collection =
             CollectionSwitch{.help = text("Only a total count is sent in batches, without reminder "
                                           "contents or an installation identifier. Turning this off "
                                           "deletes unsent counts.",
                                           "Seul un nombre total est envoyé par lots, sans le contenu des "
                                           "rappels ni identifiant d’installation. La désactivation "
                                           "supprime les décomptes non envoyés."),
                              .isOn = [] { return true; },
                              .setOn = [](bool) {}},
         .launchAtLogin = &launchAtLogin,
         .dataStore = {.defaultFolder =
                           QDir::homePath() + QStringLiteral("/.local/share/com.Kestrant.notchapp/calendars"),
                       .evolutionIsAvailable = [] { return true; },
                       .pickFolder = [](const QString&, const auto&) {}},
         .showTutorial = [] {},
         .version = QStringLiteral("1.0.0")}};
    PanelView view{{interaction, localizer, appearance, *this, settings}, PanelView::Loading::immediate};
    OnboardingWindowController onboarding{
        {*view.engine(), localizer, appearance, preferences, settings, time, time, calendar, feedback},
        [] {}};

    void addReminders() {
        addDemoData(database, time.now(), calendar.calendar(), localizer.language(),
                    [](const std::optional<EKError>& error) {
                        if (error)
                            qWarning("%s", qUtf8Printable(error->message.english));
                    });
        time.advance(Duration(0));
    }
    void load() {
        reminderStore.requestAccess();
        calendarStore.requestAccess();
        time.advance(Duration(0));
    }
    void show() {
        view.setGeometry(QRect({}, pictureSize));
        view.show();
        // Lets the window be exposed and its content be laid out.
        QCoreApplication::processEvents();
    }
    void expand() {
        interaction.expand();
        show();
    }
    /// The card with this place, from 0.
    [[nodiscard]] QString card(int row) { return reminders.cards()->taskIdAt(row); }
    void call(const char* function) {
        QMetaObject::invokeMethod(content(), function);
        // Gives a surface that opened the keyboard focus.
        QCoreApplication::processEvents();
    }
    [[nodiscard]] QQuickItem* content() const {
        return view.rootObject()->property("content").value<QQuickItem*>();
    }
    [[nodiscard]] QQuickItem* overlayContent(const char* id) {
        return view.overlays().surface(QString::fromUtf8(id));
    }
    /// The introduction, open at a page.
    void introduce(OnboardingViewModel::Page page) {
        onboarding.show(OnboardingWindowController::Page::welcome);
        onboarding.model()->setPage(page);
        QRect frame({}, onboarding.window()->size());
        frame.moveCenter(QRect({}, pictureSize).center());
        onboarding.window()->setGeometry(frame);
        time.advance(Duration(0));
        QCoreApplication::processEvents();
        // Drawing is what makes views lay out their items.
        onboarding.window()->grabWindow();
    }
    void clickInIntroduction(QPointF place, Qt::MouseButton button) {
        sendToIntroduction(QEvent::MouseButtonPress, place, button, button);
        sendToIntroduction(QEvent::MouseButtonRelease, place, button, Qt::NoButton);
    }
    /// Without letting go.
    void dragInIntroduction(QPointF from, QPointF to) {
        sendToIntroduction(QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton);
        for (int step = 1; step <= 4; ++step)
            sendToIntroduction(QEvent::MouseMove, from + (to - from) * step / 4, Qt::NoButton,
                               Qt::LeftButton);
    }
    void sendToIntroduction(QEvent::Type type, QPointF place, Qt::MouseButton button,
                            Qt::MouseButtons buttons) {
        QQuickView& window = *onboarding.window();
        QMouseEvent event(type, place, window.mapToGlobal(place), button, buttons, Qt::NoModifier);
        QCoreApplication::sendEvent(&window, &event);
        QCoreApplication::processEvents();
    }
    void focusCalendar() { call("focusCalendar"); }
    /// Places are the panel's.
    void moveMouseTo(QPointF place) {
        place.rx() += (view.width() - panel.expandedWidth()) / 2;
        QMouseEvent move(QEvent::MouseMove, place, view.mapToGlobal(place), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(&view, &move);
    }
    /// Takes hold of one place and carries it to another, without letting go.
    void drag(QPointF from, QPointF to) {
        const auto send = [this](QEvent::Type type, QPointF place, Qt::MouseButton button) {
            place.rx() += (view.width() - panel.expandedWidth()) / 2;
            QMouseEvent event(type, place, view.mapToGlobal(place), button, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(&view, &event);
            QCoreApplication::processEvents();
        };
        send(QEvent::MouseButtonPress, from, Qt::LeftButton);
        for (int step = 1; step <= 4; ++step)
            send(QEvent::MouseMove, from + (to - from) * step / 4, Qt::NoButton);
    }
    void showFullCalendar() {
        days.setShowsAllEvents(true);
        time.advance(Duration(0));
        // Lays the days out, then goes to today among them.
        for (int turn = 0; turn < 3; ++turn) {
            view.grabWindow();
            QCoreApplication::processEvents();
        }
    }
    void type(const QString& text) {
        for (const QChar letter : text)
            press(letter.toUpper().unicode(), letter);
    }
    void press(int key, const QString& text = {}) {
        QKeyEvent down(QEvent::KeyPress, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&view, &down);
        QKeyEvent up(QEvent::KeyRelease, key, Qt::NoModifier, text);
        QCoreApplication::sendEvent(&view, &up);
    }
};

}  // namespace kestrant
