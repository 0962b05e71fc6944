#pragma once

#include "ui/recap/RecapCard.h"

#include <QImage>
#include <QString>

#include <optional>

namespace kestrant {

/// The card as a picture with two pixels a point. Thread: any.
[[nodiscard]] QImage recapPicture(const RecapCard& card);

/// The person's folder for pictures, or the home folder where there is none.
[[nodiscard]] QString pictureFolder();

/// Writes the card as a PNG into a folder, which is made if need be, and gives the path as a person reads it
/// ("~/Pictures/NAME.png"). A file of that name stays as it is: the next free number is put behind the name.
/// Absent when it could not be written. Thread: any; waits for the disk.
[[nodiscard]] std::optional<QString> saveRecapPicture(const RecapCard& card, const QString& folder,
                                                      const QString& name);

}  // namespace kestrant
