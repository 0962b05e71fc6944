#include "app/CompletionCounting.h"
#include "app/KestrantApp.h"
#include "app/LaunchArguments.h"
#include "app/OpenEventStore.h"
#include "app/SingleInstance.h"
#include "cli/CommandLine.h"
#include "foundation/ControlCharacters.h"
#include "foundation/InformationDictionary.h"
#include "foundation/StandardFolders.h"
#include "platform/linux/desktop/DesktopDatabase.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <tl/expected.hpp>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

using namespace kestrant;

namespace {

constexpr int done = 0;
constexpr int refused = 1;
constexpr int wrongUsage = 2;

QString preferencesPath() {
    return configurationFolder() + QStringLiteral("/preferences.json");
}

QString configurationPath() {
    return configurationFolder() + QStringLiteral("/configuration.json");
}

Language language() {
    return preferredLanguage(preferencesPath(), QLocale::system());
}

int fail(const TextPair& message, int status) {
    std::fprintf(stderr, "kestrant: %s\n", qUtf8Printable(onOneLine(message.in(language()))));
    return status;
}

/// Keeps files that are opened later from taking the place of a stream that was closed before the start, and
/// what is printed from ending in them.
void openMissingStreams() {
    int descriptor = ::open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor < STDERR_FILENO)
        descriptor = ::open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO)
        ::close(descriptor);
}

/// The exit status of a process that has printed something.
int statusAfterPrinting(int status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    const int failed = fail(text("Not all that was to be printed could be written.",
                                 "La sortie n’a pas pu être écrite en entier."),
                            refused);
    return status == done ? failed : status;
}

/// The next line of the standard input; absent at its end.
std::optional<QString> nextInputLine() {
    std::string line;
    if (!std::getline(std::cin, line))
        return {};
    return QString::fromStdString(line);
}

/// Columns of the terminal behind the standard output, if there is one.
std::optional<int> terminalWidth() {
    winsize size{};
    if (isatty(STDOUT_FILENO) == 0 || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0)
        return {};
    return size.ws_col;
}

bool desktopHasStore() {
    return hasEvolutionModule() && desktopHasCalendarService();
}

int runCommand(int& argc, char** argv, const QStringList& arguments) {
    const QCoreApplication application(argc, argv);
    const SystemClock clock;
    std::optional<QString> configurationFile;
    const auto load = [&configurationFile] {
        return InformationDictionary::load(configurationFile, configurationPath());
    };
    std::optional<CompletionCounting> counting;
    const auto count = [&](int completions) {
        const auto information = load();
        if (!counting && information)
            counting.emplace(*information, preferencesPath(), applicationSupportFolder());
        if (counting)
            counting->record(completions);
    };
    const int ended = runCommandLine(
        arguments, {
                       .version = QCoreApplication::applicationVersion(),
                       .storeFolder = EventStoreLocation::embeddedDefault().folder,
                       .desktopHasStore = desktopHasStore,
                       .openStore = openEventStore,
                       .preferencesFile = preferencesPath(),
                       .ledgerFile = completionLedgerPath(),
                       .systemLocale = QLocale::system(),
                       .zone = SystemTimeZone().zone(),
                       .clock = clock,
                       .out = [](const QString& text) { std::fputs(qUtf8Printable(text), stdout); },
                       .err = [](const QString& text) { std::fputs(qUtf8Printable(text), stderr); },
                       .readLine = nextInputLine,
                       .lineWidth = terminalWidth(),
                       .useConfiguration = [&](const QString& file) -> tl::expected<void, TextPair> {
                           configurationFile = file;
                           return load().map([](const auto&) {});
                       },
                       .completionsCommitted = count,
                       .leave = [](int status) { std::_Exit(statusAfterPrinting(status)); },
                   });
    return statusAfterPrinting(ended);
}

/// Pictures are drawn by a program of its own, which stands beside this one where both were built.
int render(const QString& folder) {
    const QByteArray tool =
        QFile::encodeName(QFileInfo(QFile::symLinkTarget(QStringLiteral("/proc/self/exe"))).path() +
                          QStringLiteral("/kestrant-pictures"));
    const QByteArray target = QFile::encodeName(folder);
    ::execl(tool.constData(), tool.constData(), "--render", target.constData(), nullptr);
    return fail(text("The program that draws pictures is not part of this installation.",
                     "Le programme qui dessine les images ne fait pas partie de cette installation."),
                refused);
}

/// Whether a running panel has taken a request.
bool hasTaken(const InstanceRequest& request, int& argc, char** argv) {
    const QCoreApplication application(argc, argv);
    return SingleInstance::send(request);
}

int runPanel(int& argc, char** argv, const LaunchArguments& launch) {
    if (launch.request && hasTaken(*launch.request, argc, argv))
        return done;
    std::optional<EventStoreLocation> store;
    if (launch.store) {
        const auto location = EventStoreLocation::parse(*launch.store);
        if (!location)
            return fail(location.error(), wrongUsage);
        store = *location;
    }
    const auto information = InformationDictionary::load(launch.configurationFile, configurationPath());
    if (!information)
        return fail(information.error(), wrongUsage);
    const auto ended = KestrantApp::run(argc, argv,
                                        {
                                            .store = std::move(store),
                                            .desktopHasStore = desktopHasStore,
                                            .preferencesFile = preferencesPath(),
                                            .ledgerFile = completionLedgerPath(),
                                            .supportFolder = applicationSupportFolder(),
                                            .information = *information,
                                        },
                                        launch.request, launch.platform);
    return ended ? *ended : fail(ended.error(), refused);
}

}  // namespace

int main(int argc, char** argv) {
    openMissingStreams();
    QCoreApplication::setApplicationName(QStringLiteral("kestrant"));
    QCoreApplication::setApplicationVersion(
        InformationDictionary::builtIn().string(InformationDictionary::shortVersionKey).value_or(QString()));

    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const auto launch = parseLaunchArguments(arguments);
    if (!launch)
        return fail(launch.error(), wrongUsage);

    const auto noFolders = reasonForNoFolders();
    const bool asksAboutProgram = launch->mode == LaunchArguments::Mode::help ||
                                  arguments.contains(QStringLiteral("--help")) ||
                                  arguments.contains(QStringLiteral("--version"));
    if (noFolders && !asksAboutProgram && launch->mode != LaunchArguments::Mode::render)
        return fail(*noFolders, refused);

    switch (launch->mode) {
    case LaunchArguments::Mode::panel:
        return runPanel(argc, argv, *launch);
    case LaunchArguments::Mode::render:
        return render(launch->renderFolder);
    case LaunchArguments::Mode::help:
        std::printf("%s\n", qUtf8Printable(launchUsage().in(language())));
        [[fallthrough]];
    case LaunchArguments::Mode::command:
        return runCommand(argc, argv, arguments);
    }
    return wrongUsage;
}
