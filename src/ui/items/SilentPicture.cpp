#include "ui/items/SilentPicture.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QQuickWindow>

namespace kestrant {
namespace {

class PictureInterface final : public QAccessibleObject {
  public:
    explicit PictureInterface(SilentPicture* picture) : QAccessibleObject(picture) {}

    [[nodiscard]] QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(picture().window());
    }
    [[nodiscard]] QAccessibleInterface* child(int) const override { return nullptr; }
    [[nodiscard]] QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    [[nodiscard]] int childCount() const override { return 0; }
    [[nodiscard]] int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    [[nodiscard]] QString text(QAccessible::Text text) const override {
        return text == QAccessible::Name ? picture().description() : QString();
    }
    [[nodiscard]] QAccessible::Role role() const override { return QAccessible::Graphic; }
    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state;
        state.invisible = !picture().isVisible();
        return state;
    }
    [[nodiscard]] QRect rect() const override {
        const QRectF inScene = picture().mapRectToScene(QRectF(0, 0, picture().width(), picture().height()));
        const QQuickWindow* window = picture().window();
        return window ? QRect(window->mapToGlobal(inScene.topLeft().toPoint()), inScene.size().toSize())
                      : QRect();
    }

  private:
    [[nodiscard]] SilentPicture& picture() const { return static_cast<SilentPicture&>(*object()); }
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
    // Asked for each class of an object, the most derived one first.
    if (className != QLatin1String(SilentPicture::staticMetaObject.className()))
        return nullptr;
    return new PictureInterface(static_cast<SilentPicture*>(object));
}

}  // namespace

SilentPicture::SilentPicture(QQuickItem* parent) : QQuickItem(parent) {
    [[maybe_unused]] static const bool isInstalled = (QAccessible::installFactory(makeInterface), true);
}

}  // namespace kestrant
