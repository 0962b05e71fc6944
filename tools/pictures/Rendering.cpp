#include "pictures/Rendering.h"

#include "pictures/Picture.h"

#include <QDir>
#include <QGuiApplication>
#include <QLinearGradient>
#include <QPainter>
#include <QStyleHints>

#include <algorithm>
#include <iterator>

namespace kestrant {
namespace {

double pixelsPerPoint() {
    return qGuiApp->devicePixelRatio();
}

QImage desktop() {
    QImage image(pictureSize * pixelsPerPoint(), QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(pixelsPerPoint());
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, pictureSize.width(), pictureSize.height());
    sky.setColorAt(0, QColor(0x2b, 0x35, 0x66));
    sky.setColorAt(0.45, QColor(0x4f, 0x71, 0x89));
    sky.setColorAt(0.75, QColor(0x62, 0x97, 0x96));
    sky.setColorAt(1, QColor(0xb8, 0xb2, 0x7c));
    painter.fillRect(QRect({}, pictureSize), sky);
    painter.fillRect(QRect(0, 0, pictureSize.width(), 33), QColor(0, 0, 0, 56));
    return image;
}

/// The content of a window with its transparency. A grabbed window has none, but is seen in full from what it
/// looks like before black and before white: a pixel's cover is what keeps the two from differing.
QImage pictureOf(QQuickWindow& window) {
    const auto before = [&window](Qt::GlobalColor ground) {
        window.setColor(ground);
        return window.grabWindow().convertToFormat(QImage::Format_RGB32);
    };
    const QImage onWhite = before(Qt::white);
    const QImage onBlack = before(Qt::black);
    window.setColor(Qt::transparent);
    QImage picture(onBlack.size(), QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* white = reinterpret_cast<const QRgb*>(onWhite.constScanLine(y));
        const auto* black = reinterpret_cast<const QRgb*>(onBlack.constScanLine(y));
        auto* pixel = reinterpret_cast<QRgb*>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const int cover = 255 - qBound(0, qGreen(white[x]) - qGreen(black[x]), 255);
            pixel[x] = qRgba(qMin(qRed(black[x]), cover), qMin(qGreen(black[x]), cover),
                             qMin(qBlue(black[x]), cover), cover);
        }
    }
    return picture;
}

void drawWindow(QPainter& painter, QQuickWindow& window) {
    painter.drawImage(QRectF(window.geometry()), pictureOf(window));
}

bool save(Stage& stage, const QString& path) {
    QCoreApplication::processEvents();
    QImage image = desktop();
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (stage.view.isVisible())
        drawWindow(painter, stage.view);
    // The newest comes first, and lies uppermost.
    const QWindowList windows = QGuiApplication::allWindows();
    for (auto window = windows.crbegin(); window != windows.crend(); ++window) {
        auto* overlay = qobject_cast<QQuickWindow*>(*window);
        if (overlay && overlay != &stage.view && overlay->isVisible())
            drawWindow(painter, *overlay);
    }
    painter.end();
    if (image.save(path))
        return true;
    qWarning("cannot write %s", qUtf8Printable(path));
    return false;
}

}  // namespace

void prepareRendering() {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR"))
        qputenv("QT_SCALE_FACTOR", "2");
    qputenv("QT_QUICK_BACKEND", "software");
}

bool renderPictures(const QString& directory) {
    if (!QDir().mkpath(directory)) {
        qWarning("cannot create %s", qUtf8Printable(directory));
        return false;
    }
    PanelView::chooseTypeface();
    QGuiApplication::styleHints()->setCursorFlashTime(0);
    std::vector<Picture> pictures = panelPictures();
    std::ranges::move(reminderPictures(), std::back_inserter(pictures));
    std::ranges::move(introductionPictures(), std::back_inserter(pictures));
    std::ranges::move(recapPictures(), std::back_inserter(pictures));
    bool complete = true;
    for (const Language language : {Language::english, Language::french}) {
        const QString code = language == Language::french ? QStringLiteral("fr") : QStringLiteral("en");
        for (const Picture& state : pictures) {
            Stage stage(language, state.screenWidth);
            state.arrange(stage);
            complete &= save(stage, QDir(directory).filePath(code + QLatin1Char('-') + state.name +
                                                             QStringLiteral(".png")));
        }
    }
    return complete;
}

}  // namespace kestrant
