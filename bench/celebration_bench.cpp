// How long the frames of a celebration take on the software renderer: median, 99th of a hundred, worst.
// Arguments: how many times it is shown (5).

#include "pictures/Rendering.h"
#include "pictures/Stage.h"

#include <QElapsedTimer>
#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    kestrant::prepareRendering();
    QGuiApplication application(argc, argv);
    kestrant::PanelView::chooseTypeface();
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    std::vector<double> frames;
    kestrant::Stage stage(kestrant::Language::english);
    stage.appearance.setReducedMotion(false);
    stage.addReminders();
    stage.load();
    stage.expand();
    QElapsedTimer opening;
    opening.start();
    while (opening.elapsed() < 1000)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);

    QElapsedTimer frame;
    QObject::connect(&stage.view, &QQuickWindow::beforeFrameBegin, [&frame] { frame.start(); });
    QObject::connect(&stage.view, &QQuickWindow::afterFrameEnd,
                     [&frame, &frames] { frames.push_back(double(frame.nsecsElapsed()) / 1e6); });
    for (int round = 0; round < rounds; ++round) {
        stage.celebration.show({kestrant::CelebrationReason::dayDone, 7, 7});
        QElapsedTimer shown;
        shown.start();
        while (shown.elapsed() < stage.celebration.duration())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 20);
        stage.celebration.dismiss();
    }
    if (frames.empty()) {
        std::fputs("no frame was drawn\n", stderr);
        return 1;
    }
    std::ranges::sort(frames);
    std::printf("%zu frames in %.1f s: median %.1f ms, 99th %.1f ms, worst %.1f ms\n", frames.size(),
                rounds * stage.celebration.duration() / 1e3, frames[frames.size() / 2],
                frames[frames.size() * 99 / 100], frames.back());
}
