#include "ui/panel/Localizer.h"

#include <QVariant>

namespace kestrant {
namespace {

constexpr auto engineProperty = "kestrantLocalizer";

}  // namespace

Localizer::Localizer(Localization& localization, QObject* parent)
    : QObject(parent)
    , localization_(localization)
    , subscription_(localization.observeChanges([this] { Q_EMIT languageChanged(); })) {}

void Localizer::install(QQmlEngine& engine) {
    engine.setProperty(engineProperty, QVariant::fromValue(this));
    // A property that holds a function, unlike a method, is noticed by the bindings that call it.
    chooseEnglish_ = engine.evaluate(QStringLiteral("(function(english, french) { return english })"));
    chooseFrench_ = engine.evaluate(QStringLiteral("(function(english, french) { return french })"));
}

Localizer* Localizer::create(QQmlEngine* engine, QJSEngine*) {
    auto* localizer = engine->property(engineProperty).value<Localizer*>();
    QJSEngine::setObjectOwnership(localizer, QJSEngine::CppOwnership);
    return localizer;
}

void Localizer::setProgramNames(const ProgramNames& names) {
    names_ = names;
    Q_EMIT languageChanged();
}

QString Localizer::connectingToCalendar() const {
    return localization_(programTexts::connectingToCalendar(names_));
}

QString Localizer::clearsDueDate() const {
    return localization_(programTexts::clearsDueDate(names_));
}

QString Localizer::openSystemSettings() const {
    return localization_(programTexts::openSystemSettings(names_));
}

QString Localizer::deletesEvent(const QString& calendarTitle) const {
    return localization_(programTexts::deletesEvent(calendarTitle, names_));
}

}  // namespace kestrant
