#include "ui/Localizer.h"

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

}  // namespace kestrant
