#include <QGuiApplication>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Death tests fork; with Qt's threads around, re-executing the binary is the safe style.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ::testing::InitGoogleMock(&argc, argv);
    // ctest's test discovery runs the binary without the test environment; there is never a display.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
