#pragma once

#include "pictures/StageGround.h"
#include "ui/onboarding/OnboardingTrial.h"
#include "ui/onboarding/OnboardingViewModel.h"
#include "ui/onboarding/OnboardingWindowController.h"
#include "ui/panel/PanelView.h"
#include "ui/settings/SettingsViewModel.h"

#include <QCoreApplication>
#include <QDir>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QQuickItem>
#include <QSize>

namespace kestrant {

/// Points that a picture covers, the panel at its upper edge.
inline constexpr QSize pictureSize(1060, 720);

/// The program for one picture, from the database to the window.
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
        {*view.engine(), localizer, appearance, preferences, settings, time, time, currentZone, feedback},
        [] {}};

    void addReminders() {
        addDemoData(database, time.now(), currentZone.zone(), localizer.language(),
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
        sendToIntroduction(QEvent::MouseMove, place, Qt::NoButton, Qt::NoButton);
        sendToIntroduction(QEvent::MouseButtonPress, place, button, button);
        sendToIntroduction(QEvent::MouseButtonRelease, place, button, Qt::NoButton);
        // What opened takes the pointer from what it was on; without a move that happens with some later
        // frame.
        sendToIntroduction(QEvent::MouseMove, place, Qt::NoButton, Qt::NoButton);
    }
    /// Without letting go.
    void dragInIntroduction(QPointF from, QPointF to) {
        sendToIntroduction(QEvent::MouseMove, from, Qt::NoButton, Qt::NoButton);
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
