#pragma once

#include "foundation/Text.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>

#include <tl/expected.hpp>

#include <functional>

namespace kestrant {

/// The desktop's own dialog for choosing a folder, through its portal (org.freedesktop.portal.FileChooser).
/// Thread: main; never waits.
class FolderDialog : public QObject {
    Q_OBJECT

  public:
    /// Told the chosen folder, or why there is no dialog; not at all when the person changes their mind.
    using Done = std::function<void(tl::expected<QString, TextPair> folder)>;

    explicit FolderDialog(const QDBusConnection& bus = QDBusConnection::sessionBus(),
                          QObject* parent = nullptr);

    /// Opens the dialog in a folder; one that is still open is forgotten.
    void open(const QString& title, const QString& start, Done done);

  private Q_SLOTS:
    void answered(uint response, const QVariantMap& results, const QDBusMessage& message);

  private:
    void fail();

    QDBusConnection bus_;
    /// The object that answers for the open dialog; empty while there is none.
    QString request_;
    Done done_;
    int opened_ = 0;
};

}  // namespace kestrant
