#include "platform/linux/machine_info.h"
#include "platform/qt/application_bundle_info.h"
#include "platform/qt/desktop_device.h"
#include "platform/qt/qt_locale_info.h"

#include <QCoreApplication>
#include <QFile>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(QtLocaleInfo, LanguageAndRegionNamesAreEnglishWithScriptAndRegionInParentheses)
{
    const std::pair<const char *, std::optional<QString>> languages[] = { { "de", QStringLiteral("German") },
        { "de-DE", QStringLiteral("German (Germany)") }, { "pt_BR", QStringLiteral("Portuguese (Brazil)") },
        { "es-419", QStringLiteral("Spanish (Latin America)") }, { "Unknown", std::nullopt },
        { "", std::nullopt }, { "de-XX", std::nullopt } };
    for (const auto &[code, name] : languages)
        EXPECT_EQ(QtLocaleInfo().englishNameForLanguage(QString::fromUtf8(code)), name) << code;

    const std::pair<const char *, std::optional<QString>> regions[] = { { "DE", QStringLiteral("Germany") },
        { "US", QStringLiteral("United States") }, { "419", QStringLiteral("Latin America") },
        { "Unknown", std::nullopt }, { "", std::nullopt } };
    for (const auto &[code, name] : regions)
        EXPECT_EQ(QtLocaleInfo().englishNameForRegion(QString::fromUtf8(code)), name) << code;
}

TEST(QtLocaleInfo, PreferredLanguagesNeverNameTheCLocale)
{
    const QStringList languages = QtLocaleInfo().preferredLanguages();
    EXPECT_FALSE(languages.contains(QStringLiteral("C")));
    EXPECT_FALSE(languages.contains(QStringLiteral("POSIX")));
}

TEST(DesktopDevice, TheIdiomFollowsTheWindowWidth)
{
    DesktopDevice device(QStringLiteral("PC"), QStringLiteral("Debian GNU/Linux"), QStringLiteral("12"));
    QSignalSpy idiomChanged(&device, &DesktopDevice::userInterfaceIdiomChanged);
    EXPECT_EQ(device.userInterfaceIdiom(), Device::phoneIdiom);

    device.setWindowWidth(743.5);
    EXPECT_EQ(device.userInterfaceIdiom(), Device::phoneIdiom);
    device.setWindowWidth(744);
    EXPECT_EQ(device.userInterfaceIdiom(), Device::tabletIdiom);
    device.setWindowWidth(1366);
    EXPECT_TRUE(device.isTablet());
    device.setWindowWidth(390);

    EXPECT_EQ(device.userInterfaceIdiom(), Device::phoneIdiom);
    EXPECT_EQ(idiomChanged.count(), 2);
}

struct MachineInfoTest : ::testing::Test
{
    QTemporaryDir directory;

    QString write(const char *name, const QByteArray &content)
    {
        const QString path = directory.filePath(QString::fromUtf8(name));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }
};

TEST_F(MachineInfoTest, TheModelIsTheTrimmedProductNameOrLinuxPC)
{
    EXPECT_EQ(linuxMachineModel(write("product_name", "  ThinkPad X1 Carbon Gen 11\n")),
        QStringLiteral("ThinkPad X1 Carbon Gen 11"));
    EXPECT_EQ(linuxMachineModel(write("blank", " \n")), QStringLiteral("Linux PC"));
    EXPECT_EQ(linuxMachineModel(directory.filePath(QStringLiteral("missing"))), QStringLiteral("Linux PC"));
}

TEST_F(MachineInfoTest, TheSystemIsTheDistributionsNameAndVersion)
{
    const OsRelease debian = linuxOsRelease(write("os-release",
        "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\n"
        "NAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n"
        "# NAME=commented out\n"));
    EXPECT_EQ(debian.name, QStringLiteral("Debian GNU/Linux"));
    EXPECT_EQ(debian.version, QStringLiteral("12"));

    const OsRelease unquoted = linuxOsRelease(write("plain", "NAME=Fedora\nVERSION_ID=40\n"));
    EXPECT_EQ(unquoted.name, QStringLiteral("Fedora"));
    EXPECT_EQ(unquoted.version, QStringLiteral("40"));

    const OsRelease escaped = linuxOsRelease(write("escaped", "NAME='Say \\'hi\\''\nVERSION_ID=\"1\"\n"));
    EXPECT_EQ(escaped.name, QStringLiteral("Say 'hi'"));
}

TEST_F(MachineInfoTest, WithoutOsReleaseTheSystemIsLinuxAndItsKernel)
{
    const OsRelease none = linuxOsRelease(directory.filePath(QStringLiteral("missing")));
    EXPECT_EQ(none.name, QStringLiteral("Linux"));
    EXPECT_EQ(none.version, QSysInfo::kernelVersion());

    const OsRelease rolling = linuxOsRelease(write("rolling", "ID=arch\n"));
    EXPECT_EQ(rolling.name, QStringLiteral("Linux"));
    EXPECT_EQ(rolling.version, QSysInfo::kernelVersion());
}

TEST(ApplicationBundleInfo, NameAndVersionComeFromTheApplication)
{
    const QString name = QCoreApplication::applicationName();
    const QString version = QCoreApplication::applicationVersion();
    QCoreApplication::setApplicationName(QStringLiteral("Brivanta"));
    QCoreApplication::setApplicationVersion(QStringLiteral("1.0.0"));

    const ApplicationBundleInfo bundle;
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleName")),
        QVariant(QStringLiteral("Brivanta")));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleShortVersionString")),
        QVariant(QStringLiteral("1.0.0")));
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleVersion")).isValid());
    QCoreApplication::setApplicationVersion(QString());
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey(QStringLiteral("CFBundleShortVersionString")).isValid());

    QCoreApplication::setApplicationName(name);
    QCoreApplication::setApplicationVersion(version);
}

} // namespace
} // namespace brivanta
