#pragma once

#include <memory>

class QCoreApplication;
class QGuiApplication;
class QLocale;
class QTranslator;

namespace brivanta {

// The application: picks the real backends, once, hands them to the logic, and shows ContentView in
// its one window.
class BrivantaApp
{
public:
    // Application and organisation names and the version, from the build, and the text face. The names
    // are the bundle's name and version and name the preferences store, so this comes first. Also picks
    // the software scene graph where OpenGL would run on the CPU.
    static void configure();
    // Installs the compiled translation for the locale's languages; false when there is none (English).
    static bool installTranslator(
        QCoreApplication &application, QTranslator &translator, const QLocale &locale);

    explicit BrivantaApp(QGuiApplication &application);
    ~BrivantaApp();

    // False when the views failed to load; Qt has printed the QML errors by then.
    [[nodiscard]] bool hasViews() const;
    void show();
    // Shows the window again if it was minimised, raises it and asks for the focus.
    void bringForward();

private:
    // The backends and what is built on them, defined beside the constructor so that this header names
    // no backend.
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

} // namespace brivanta
