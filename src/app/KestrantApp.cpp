#include "app/KestrantApp.h"

#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "foundation/StandardFolders.h"
#include "platform/linux/desktop/ProcessMemory.h"
#include "platform/linux/wayland/LayerShell.h"
#include "platform/linux/x11/Platform.h"
#include "ui/panel/PanelView.h"

#include <QGuiApplication>

#include <optional>
#include <utility>

namespace kestrant {

tl::expected<int, TextPair> KestrantApp::run(int& argc, char** argv, AppDelegate::Options options,
                                             const std::optional<InstanceRequest>& request,
                                             const QString& platform) {
    useOneHeap();
    auto chosenPlatform = preparePlatform(platform.toLatin1(), &LayerShell::isOffered);
    if (!chosenPlatform)
        return tl::unexpected(chosenPlatform.error());
    PanelView::chooseRenderer();
    QGuiApplication application(argc, argv);
    {
        const PlatformChoice chosen = std::move(*chosenPlatform);  // given back to the environment here
    }
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QGuiApplication::setDesktopFileName(desktopIdentifier);
    PanelView::chooseTypeface();

    AppDelegate delegate(std::move(options));

    SingleInstance instance;
    const auto claim = instance.claim([&delegate](const InstanceRequest& asked) { delegate.perform(asked); });
    if (claim == SingleInstance::Claim::taken) {
        if (SingleInstance::send(request.value_or(InstanceRequest{})))
            return 0;
        const TextPair silent =
            text("Another process holds %1, but does not answer. If it is Kestrant, end it and start again.",
                 "Un autre processus retient %1, mais ne répond pas. Si c’est Kestrant, terminez-le et "
                 "recommencez.");
        const QString lock = SingleInstance::lockPath();
        return tl::unexpected(TextPair{silent.english.arg(lock), silent.french.arg(lock)});
    }

    const TerminationSignals signals([&delegate] { delegate.terminate(); });
    QObject::connect(&instance, &SingleInstance::takenOnBus, &delegate, &AppDelegate::terminate);
    delegate.applicationDidFinishLaunching();
    if (request)
        delegate.perform(*request);
    return QGuiApplication::exec();
}

}  // namespace kestrant
