#include "app/LaunchArguments.h"

#include "cli/CommandLineArguments.h"

namespace kestrant {

tl::expected<LaunchArguments, TextPair> parseLaunchArguments(const QStringList& arguments) {
    LaunchArguments result;
    bool hasMode = false;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString& argument = arguments[index];
        const auto value = [&]() -> std::optional<QString> {
            if (index + 1 >= arguments.size())
                return {};
            return arguments[++index];
        };
        const auto choose = [&](LaunchArguments::Mode mode) {
            result.mode = mode;
            hasMode = true;
        };

        if (argument == QLatin1String("--help") || argument == QLatin1String("-h")) {
            choose(LaunchArguments::Mode::help);
            return result;
        }
        const auto asks = [&](const char* option) { return !hasMode && argument == QLatin1String(option); };
        if (asks("--toggle")) {
            choose(LaunchArguments::Mode::panel);
            result.request = {InstanceRequest::Action::toggle};
        } else if (asks("--new") || asks("--search")) {
            // All that follows is text, so that it needs no quotes.
            const QString text = QStringList(arguments.mid(index + 1)).join(QLatin1Char(' '));
            if (text.size() > InstanceRequest::longestText)
                return tl::unexpected(kestrant::text("The text is too long.", "Le texte est trop long."));
            result.request = {
                asks("--new") ? InstanceRequest::Action::newReminder : InstanceRequest::Action::search, text};
            return result;
        } else if (argument == QLatin1String("--render") && !hasMode) {
            const auto folder = value();
            if (!folder || folder->isEmpty())
                return tl::unexpected(text("--render needs a folder.", "--render demande un dossier."));
            choose(LaunchArguments::Mode::render);
            result.renderFolder = *folder;
        } else if (argument == QLatin1String("--store") && index + 1 < arguments.size()) {
            result.store = value();
        } else if (argument == QLatin1String("--platform") && !hasMode) {
            result.platform = value().value_or(QString());
            if (result.platform != QLatin1String("xcb") && result.platform != QLatin1String("wayland"))
                return tl::unexpected(
                    text("--platform needs xcb or wayland.", "--platform demande xcb ou wayland."));
        } else if (argument == QLatin1String("--configuration") && index + 1 < arguments.size()) {
            result.configurationFile = value();
        } else if (!hasMode && (argument == QLatin1String("--version") || namesCommand(arguments))) {
            result.mode = LaunchArguments::Mode::command;
            return result;
        } else {
            return tl::unexpected(
                TextPair{QStringLiteral("Unknown argument: %1. See kestrant --help.").arg(argument),
                         QStringLiteral("Argument inconnu : %1. Voir kestrant --help.").arg(argument)});
        }
    }
    return result;
}

TextPair launchUsage() {
    return text(
        "Usage: kestrant [--store vdir:PATH | evolution]  open the panel at the top of the screen\n"
        "         --configuration FILE                    with other deployment values than the built-in "
        "ones\n"
        "         --platform xcb | wayland                in place of what the session offers\n"
        "       kestrant --toggle                         open the panel, or close it\n"
        "       kestrant --new [TEXT]                     open quick add, with TEXT in its line\n"
        "       kestrant --search [TEXT]                  open the search field, with TEXT in it\n",
        "Utilisation : kestrant [--store vdir:CHEMIN | evolution]  ouvrir le panneau en haut de l’écran\n"
        "                --configuration FICHIER                   avec d’autres valeurs de déploiement\n"
        "                --platform xcb | wayland                  au lieu de ce que la session offre\n"
        "              kestrant --toggle                           ouvrir ou fermer le panneau\n"
        "              kestrant --new [TEXTE]                      ouvrir l’ajout rapide, TEXTE déjà saisi\n"
        "              kestrant --search [TEXTE]                   ouvrir la recherche, TEXTE déjà saisi\n");
}

}  // namespace kestrant
