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
        if (argument == QLatin1String("--toggle") && !hasMode) {
            choose(LaunchArguments::Mode::toggle);
        } else if (argument == QLatin1String("--render") && !hasMode) {
            const auto folder = value();
            if (!folder || folder->isEmpty())
                return tl::unexpected(text("--render needs a folder.", "--render demande un dossier."));
            choose(LaunchArguments::Mode::render);
            result.renderFolder = *folder;
        } else if (argument == QLatin1String("--store") && index + 1 < arguments.size()) {
            result.store = value();
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
        "       kestrant --toggle                         open or close the panel that is running\n",
        "Utilisation : kestrant [--store vdir:CHEMIN | evolution]  ouvrir le panneau en haut de l’écran\n"
        "                --configuration FICHIER                   avec d’autres valeurs de déploiement\n"
        "              kestrant --toggle                           ouvrir ou fermer le panneau en cours\n");
}

}  // namespace kestrant
