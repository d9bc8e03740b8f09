// The yardstick of the start-up bench: the least a Qt Quick application does to show a window with text.

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QUrl>

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    QQmlApplicationEngine engine;
    engine.load(QUrl(QStringLiteral("qrc:/BareWindow/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    return app.exec();
}
