#include "eventkit/vdir/VdirEventStore.h"
#include "foundation/Clocks.h"
#include "foundation/QtScheduler.h"
#include "foundation/SystemTimeZone.h"
#include "pictures/Rendering.h"
#include "ui/onboarding/DemoData.h"
#include "ui/panel/PanelView.h"

#include <QDir>
#include <QGuiApplication>
#include <QLocale>

#include <cstdio>
#include <cstring>

using namespace kestrant;

namespace {

int drawInto(int& argc, char** argv) {
    prepareRendering();
    PanelView::chooseRenderer();
    const QGuiApplication application(argc, argv);
    PanelView::chooseTypeface();
    return renderPictures(QString::fromLocal8Bit(argv[2])) ? 0 : 1;
}

/// Fills a folder with the sample lists, reminders and events, around the present.
int fillFolder(int& argc, char** argv) {
    const QCoreApplication application(argc, argv);
    const QString folder = QString::fromLocal8Bit(argv[2]);
    if (!QDir().mkpath(folder)) {
        qWarning("cannot create %s", qUtf8Printable(folder));
        return 1;
    }
    QtScheduler scheduler;
    const SystemClock clock;
    const FixedTimeZone currentZone(SystemTimeZone().zone());
    VdirEventStore store(folder, scheduler, clock, currentZone);
    const auto end = [](const std::optional<EKError>& error) {
        if (error)
            qWarning("%s", qUtf8Printable(error->message.english));
        QCoreApplication::exit(error ? 1 : 0);
    };
    const bool isFrench = QLocale::system().language() == QLocale::French;
    store.requestFullAccessToReminders([&](bool granted, const std::optional<EKError>& error) {
        if (!granted)
            return end(error);
        addDemoData(store, clock.now(), currentZone.zone(), isFrench ? Language::french : Language::english,
                    end);
    });
    return QCoreApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::strcmp(argv[1], "--render") == 0)
        return drawInto(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--samples") == 0)
        return fillFolder(argc, argv);
    std::fputs("usage: kestrant-pictures --render FOLDER    pictures of every state in both languages\n"
               "       kestrant-pictures --samples FOLDER   sample lists, reminders and events as files\n",
               stderr);
    return 2;
}
