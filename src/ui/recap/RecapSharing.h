#pragma once

#include "recap/RecapShareLinks.h"
#include "ui/recap/RecapCard.h"

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QUrl>
#include <QVariantList>

namespace kestrant {

class BackgroundExecutor;
class Clock;
class CurrentTimeZone;
class Localizer;
class Scheduler;
class UserDefaults;

/// Passes on a card of the recap: as a picture, as text, and as a link where a page for it is configured. The
/// links are remembered until they are forgotten. There is no desktop portal that shares, so that files and
/// the clipboard are the ways out. Thread: main.
class RecapSharing : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by the application")
    /// The link that holds the card; empty where no page for it is configured.
    Q_PROPERTY(QString link READ link NOTIFY linksChanged)
    /// What the link tells, in words.
    Q_PROPERTY(QString contentText READ contentText NOTIFY linksChanged)
    /// Links that were made here, the newest first: {link, title, made} each.
    Q_PROPERTY(QVariantList madeLinks READ madeLinks NOTIFY linksChanged)
    /// What became of a picture or text that was to be passed on; empty for nothing yet.
    Q_PROPERTY(QString message READ message NOTIFY messageChanged)
    Q_PROPERTY(bool hasFailed READ hasFailed NOTIFY messageChanged)

  public:
    struct Services {
        Scheduler& scheduler;
        const Clock& clock;
        CurrentTimeZone& currentZone;
        Localizer& localizer;
        /// Where pictures are written.
        BackgroundExecutor& executor;
        /// Where links that were made are remembered.
        UserDefaults& defaults;
        /// Of the page that shows shared recaps; empty for none.
        QString baseUrl;
    };
    /// Everything must outlive the object.
    explicit RecapSharing(const Services& services, QObject* parent = nullptr);

    /// Makes the link of a card and remembers it; everything below concerns this card.
    Q_INVOKABLE void begin(const kestrant::RecapCard& card);

    [[nodiscard]] QString link() const { return link_.toString(); }
    [[nodiscard]] QString contentText() const;
    [[nodiscard]] QVariantList madeLinks() const;
    [[nodiscard]] const QString& message() const { return message_; }
    [[nodiscard]] bool hasFailed() const { return hasFailed_; }

    Q_INVOKABLE void copyLink();
    Q_INVOKABLE void forgetLink(const QString& link);
    Q_INVOKABLE void forgetAllLinks();
    /// Writes the card as a picture into the folder for pictures, under a name that is not in use.
    Q_INVOKABLE void savePicture();
    Q_INVOKABLE void copyPicture();
    Q_INVOKABLE void copyText();
    /// Replaces the person's own folder for pictures.
    void setPictureFolder(const QString& folder) { pictureFolder_ = folder; }

  Q_SIGNALS:
    void linksChanged();
    void messageChanged();

  private:
    [[nodiscard]] QString fileName() const;
    void tell(const QString& message, bool hasFailed = false);

    Services services_;
    RecapCard card_;
    RecapShareLinks links_;
    QUrl link_;
    QString message_;
    bool hasFailed_ = false;
    QString pictureFolder_;
};

}  // namespace kestrant
