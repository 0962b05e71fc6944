// The least a program with a Qt Quick window does: what starting Kestrant is compared with.

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/BareWindow/BareWindow.qml")));
    return engine.rootObjects().isEmpty() ? 1 : application.exec();
}
