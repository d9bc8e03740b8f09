#include "platform/linux/machine_info.h"
#include "platform/qt/qt_locale_info.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(QtLocaleInfo, LanguageAndRegionNamesAreEnglishWithScriptAndRegionInParentheses)
{
    const std::pair<const char *, std::optional<QString>> languages[] = { { "de", QStringLiteral("German") },
        { "de-DE", QStringLiteral("German (Germany)") }, { "pt_BR", QStringLiteral("Portuguese (Brazil)") },
        { "es-419", QStringLiteral("Spanish (Latin America)") }, { "", std::nullopt },
        { "de-XX", std::nullopt } };
    for (const auto &[code, name] : languages)
        EXPECT_EQ(QtLocaleInfo().englishNameForLanguage(QString::fromUtf8(code)), name) << code;

    const std::pair<const char *, std::optional<QString>> regions[] = { { "DE", QStringLiteral("Germany") },
        { "419", QStringLiteral("Latin America") }, { "Unknown", std::nullopt } };
    for (const auto &[code, name] : regions)
        EXPECT_EQ(QtLocaleInfo().englishNameForRegion(QString::fromUtf8(code)), name) << code;
}

TEST(QtLocaleInfo, PreferredLanguagesNeverNameTheCLocale)
{
    const QStringList languages = QtLocaleInfo().preferredLanguages();
    EXPECT_FALSE(languages.contains(QStringLiteral("C")));
    EXPECT_FALSE(languages.contains(QStringLiteral("POSIX")));
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

TEST_F(MachineInfoTest, TheSystemIsTheDistributionsNameAndVersionOrLinuxAndItsKernel)
{
    const struct
    {
        const char *content; // nullptr: no file
        QString name;
        QString version;
    } cases[]
        = { { "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n"
              "# NAME=commented out\n",
                QStringLiteral("Debian GNU/Linux"), QStringLiteral("12") },
              { "NAME=Fedora\nVERSION_ID=40\n", QStringLiteral("Fedora"), QStringLiteral("40") },
              { "NAME='Say \\'hi\\''\nVERSION_ID=\"1\"\n", QStringLiteral("Say 'hi'"), QStringLiteral("1") },
              { "ID=arch\n", QStringLiteral("Linux"), QSysInfo::kernelVersion() },
              { nullptr, QStringLiteral("Linux"), QSysInfo::kernelVersion() } };
    for (const auto &c : cases) {
        const OsRelease release = linuxOsRelease(
            c.content ? write("os-release", c.content) : directory.filePath(QStringLiteral("missing")));
        EXPECT_EQ(release.name, c.name) << (c.content ? c.content : "no file");
        EXPECT_EQ(release.version, c.version) << (c.content ? c.content : "no file");
    }
}

} // namespace
} // namespace brivanta
