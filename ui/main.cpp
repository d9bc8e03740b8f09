#include "ui/brivanta_app.h"

#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    brivanta::BrivantaApp::configure();
    brivanta::BrivantaApp brivanta(application);
    brivanta.show();
    return application.exec();
}
