#pragma once

#include <QQuickItem>
#include <QString>

namespace kestrant {

/// Holder of views that are only looked at, or operated by other means than the keyboard: assistive
/// technology is told of one picture and of nothing in it. A view gives it `Accessible.role`, without which
/// Qt Quick passes over it. Thread: main.
class SilentPicture : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// A description for screen readers.
    Q_PROPERTY(QString description MEMBER description_ NOTIFY descriptionChanged)

  public:
    explicit SilentPicture(QQuickItem* parent = nullptr);
    [[nodiscard]] const QString& description() const { return description_; }

  Q_SIGNALS:
    void descriptionChanged();

  private:
    QString description_;
};

}  // namespace kestrant
