#include <QCoreApplication>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    // Death tests fork; with Qt's threads around, re-executing the binary is the safe style.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    ::testing::InitGoogleMock(&argc, argv);
    QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
