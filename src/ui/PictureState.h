#pragma once

#include "ui/RenderStage.h"

#include <QString>

#include <functional>
#include <vector>

namespace kestrant {

/// One picture and what leads to what it shows.
struct PictureState {
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

/// What can be done to a reminder, its forms and its failures.
[[nodiscard]] std::vector<PictureState> reminderPictures();
/// The introduction, the year that follows it, and the settings.
[[nodiscard]] std::vector<PictureState> introductionPictures();

}  // namespace kestrant
