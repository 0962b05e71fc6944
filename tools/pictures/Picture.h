#pragma once

#include "foundation/CurrentTimeZone.h"
#include "pictures/Stage.h"

#include <QString>

#include <functional>
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

/// Has completed reminders on most days of this year and the one before, more on some days of the week, and a
/// few today whose titles are known.
void completeReminders(Stage& stage);

/// The panel at rest and open, its modules, menus and forms.
[[nodiscard]] std::vector<Picture> panelPictures();
/// The recap of a year, the year that follows the introduction, and what is celebrated.
[[nodiscard]] std::vector<Picture> recapPictures();
/// Pictures of a reminder's actions, forms and failures.
[[nodiscard]] std::vector<Picture> reminderPictures();
/// The introduction and the settings.
[[nodiscard]] std::vector<Picture> introductionPictures();

}  // namespace kestrant
