#pragma once

#include "foundation/CurrentTimeZone.h"
#include "pictures/Stage.h"

#include <QString>

#include <array>
#include <functional>
#include <map>
#include <vector>

namespace kestrant {

/// One picture and what leads to what it shows.
struct Picture {
    QString name;
    std::function<void(Stage&)> arrange;
    double screenWidth = 1512;
};

/// The usual beginning of a picture: the expanded panel with its reminders.
[[nodiscard]] inline std::function<void(Stage&)> expanded(std::function<void(Stage&)> then = [](Stage&) {}) {
    return [then = std::move(then)](Stage& stage) {
        stage.addReminders();
        stage.load();
        stage.expand();
        then(stage);
    };
}

/// A year in which reminders were completed.
inline void completeReminders(Stage& stage) {
    const std::array counts{9, 14, 11, 21, 17, 26, 12, 8, 23, 31, 19};
    std::map<QString, ReminderCompletionState> states;
    for (std::size_t month = 0; month < counts.size(); ++month) {
        for (int number = 0; number < counts[month]; ++number) {
            const QDate day(2026, int(month) + 1, 1 + number % 20);
            states.emplace(
                QStringLiteral("%1-%2").arg(month).arg(number),
                ReminderCompletionState::completed(stage.currentZone.zone().instantAt(day, QTime(12, 0))));
        }
    }
    if (!stage.ledger.reconcile(states, {}, stage.time.now()))
        qWarning("cannot write the record of completions");
}

/// The panel at rest and open, its modules, menus and forms.
[[nodiscard]] std::vector<Picture> panelPictures();
/// Pictures of a reminder's actions, forms and failures.
[[nodiscard]] std::vector<Picture> reminderPictures();
/// The introduction, the year that follows it, and the settings.
[[nodiscard]] std::vector<Picture> introductionPictures();

}  // namespace kestrant
