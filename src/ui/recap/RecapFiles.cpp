#include "ui/recap/RecapFiles.h"

#include "ui/recap/RecapPainting.h"

#include <QDir>
#include <QFile>
#include <QPainter>
#include <QStandardPaths>

namespace kestrant {
namespace {

constexpr int pixelsPerPoint = 2;
/// Files of one name that are looked for before giving up.
constexpr int mostOfOneName = 1000;

}  // namespace

QImage recapPicture(const RecapCard& card) {
    QImage image((recapPictureSize * pixelsPerPoint).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(pixelsPerPoint);
    QPainter painter(&image);
    paintRecapPicture(painter, card);
    return image;
}

QString pictureFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    return folder.isEmpty() ? QDir::homePath() : folder;
}

std::optional<QString> saveRecapPicture(const RecapCard& card, const QString& folder, const QString& name) {
    if (!QDir().mkpath(folder))
        return {};
    QFile file;
    for (int number = 1; number < mostOfOneName && !file.isOpen(); ++number) {
        const QString numbered = number == 1 ? name : QStringLiteral("%1 (%2)").arg(name).arg(number);
        file.setFileName(QDir(folder).filePath(numbered + QStringLiteral(".png")));
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly) && !file.exists())
            return {};
    }
    if (!file.isOpen())
        return {};
    if (!recapPicture(card).save(&file, "PNG") || !file.flush()) {
        file.remove();
        return {};
    }
    const QString path = file.fileName();
    const QString home = QDir::homePath() + u'/';
    return path.startsWith(home) ? QStringLiteral("~/") + path.mid(home.size()) : path;
}

}  // namespace kestrant
