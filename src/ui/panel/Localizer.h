#pragma once

#include "preferences/Localization.h"
#include "preferences/ProgramNames.h"

#include <QJSValue>
#include <QLocale>
#include <QObject>
#include <QQmlEngine>

namespace kestrant {

/// The language of the views. In QML, `Localizer.text("Done", "Terminé")` gives the text of the present
/// language; a binding that uses it is evaluated again when the language changes. Serves one QML engine.
/// Thread: main.
class Localizer : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isFrench READ isFrench NOTIFY languageChanged)
    /// Times of day are told with AM and PM.
    Q_PROPERTY(bool hasTwelveHours READ hasTwelveHours NOTIFY languageChanged)
    Q_PROPERTY(QJSValue text READ textFunction NOTIFY languageChanged)
    // Sentences that name programs of the desktop.
    Q_PROPERTY(QString connectingToCalendar READ connectingToCalendar NOTIFY languageChanged)
    Q_PROPERTY(QString clearsDueDate READ clearsDueDate NOTIFY languageChanged)
    /// Empty where there is no program in which access is allowed.
    Q_PROPERTY(QString openSystemSettings READ openSystemSettings NOTIFY languageChanged)

  public:
    /// Follows the language in force; `localization` must outlive this.
    explicit Localizer(Localization& localization, QObject* parent = nullptr);

    /// Makes this the `Localizer` of an engine, before any of its views is made.
    void install(QQmlEngine& engine);
    static Localizer* create(QQmlEngine* engine, QJSEngine*);

    [[nodiscard]] Language language() const { return localization_.language(); }
    [[nodiscard]] bool isFrench() const { return localization_.isFrench(); }
    [[nodiscard]] QString operator()(const TextPair& pair) const { return localization_(pair); }
    /// For dates and numbers: fr_FR or en_US.
    [[nodiscard]] QLocale locale() const { return localization_.dateLocale(); }
    [[nodiscard]] ClockHours clockHours() const { return localization_.clockHours(); }
    [[nodiscard]] bool hasTwelveHours() const { return clockHours() == ClockHours::twelve; }

    /// Sets the names of the desktop's programs that sentences mention.
    void setProgramNames(const ProgramNames& names);
    [[nodiscard]] QString connectingToCalendar() const;
    [[nodiscard]] QString clearsDueDate() const;
    [[nodiscard]] QString openSystemSettings() const;
    Q_INVOKABLE [[nodiscard]] QString deletesEvent(const QString& calendarTitle) const;

  Q_SIGNALS:
    void languageChanged();

  private:
    [[nodiscard]] QJSValue textFunction() const { return isFrench() ? chooseFrench_ : chooseEnglish_; }

    Localization& localization_;
    ProgramNames names_ = linuxNames();
    Subscription subscription_;
    QJSValue chooseEnglish_;
    QJSValue chooseFrench_;
};

}  // namespace kestrant
