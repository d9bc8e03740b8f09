#include "ui/brivanta_app.h"

#include <QGuiApplication>
#include <QtQml/qqmlextensionplugin.h>
#include <cstdlib>

Q_IMPORT_QML_PLUGIN(BrivantaPlugin)

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    brivanta::BrivantaApp::configure();
    brivanta::BrivantaApp brivanta(application);
    // An empty window helps no one: stop with the QML errors Qt printed, so a broken install is seen.
    if (!brivanta.hasViews()) {
        qCritical("Brivanta's views could not be loaded.");
        return EXIT_FAILURE;
    }
    brivanta.show();
    return application.exec();
}
