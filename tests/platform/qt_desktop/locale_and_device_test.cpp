#include "platform/linux/machine_info.h"
#include "platform/qt/qt_locale_info.h"
#include "platform/qt/scene_graph_backend.h"

#include <QFile>
#include <QSysInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace brivanta {
namespace {

TEST(QtLocaleInfo, NamesAreEnglishWithScriptAndRegionInParenthesesAndTheCLocaleIsNeverPreferred)
{
    const std::pair<const char *, std::optional<QString>> languages[]
        = { { "de", "German" }, { "de-DE", "German (Germany)" }, { "pt_BR", "Portuguese (Brazil)" },
              { "es-419", "Spanish (Latin America)" }, { "zh-Hans-CN", "Chinese (Simplified Han, China)" },
              { "", std::nullopt }, { "de-XX", std::nullopt }, { "de-Xxxx", std::nullopt },
              { "de-Germany", std::nullopt } };
    for (const auto &[code, name] : languages)
        EXPECT_EQ(QtLocaleInfo().englishNameForLanguage(QString::fromUtf8(code)), name) << code;

    const std::pair<const char *, std::optional<QString>> regions[]
        = { { "DE", "Germany" }, { "419", "Latin America" }, { "Unknown", std::nullopt } };
    for (const auto &[code, name] : regions)
        EXPECT_EQ(QtLocaleInfo().englishNameForRegion(QString::fromUtf8(code)), name) << code;

    const QStringList preferred = QtLocaleInfo().preferredLanguages();
    EXPECT_FALSE(preferred.contains("C") || preferred.contains("POSIX"));
}

TEST(MachineInfo, TheModelIsTheTrimmedProductNameAndTheSystemTheDistributionsOrLinuxAndItsKernel)
{
    QTemporaryDir directory;
    const QString missing = directory.filePath("missing");
    const auto write = [&](const QByteArray &content) {
        QFile file(directory.filePath("file"));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return file.fileName();
    };
    EXPECT_EQ(linuxMachineModel(write("  ThinkPad X1 Carbon Gen 11\n")), "ThinkPad X1 Carbon Gen 11");
    EXPECT_EQ(linuxMachineModel(missing), "Linux PC");

    // os-release content (nullptr: no file), then the name and version read from it.
    const std::tuple<const char *, QString, QString> cases[]
        = { { "PRETTY_NAME=\"Debian GNU/Linux 12 (bookworm)\"\nNAME=\"Debian GNU/Linux\"\nVERSION_ID=\"12\"\n"
              "# NAME=commented out\n",
                "Debian GNU/Linux", "12" },
              { "NAME='Say \\'hi\\''\nVERSION_ID=1\n", "Say 'hi'", "1" },
              { "ID=arch\n", "Linux", QSysInfo::kernelVersion() },
              { nullptr, "Linux", QSysInfo::kernelVersion() } };
    for (const auto &[content, name, version] : cases) {
        const OsRelease release = linuxOsRelease(content ? write(content) : missing);
        EXPECT_EQ(std::pair(release.name, release.version), std::pair(name, version))
            << (content ? content : "");
    }
}

TEST(SceneGraphBackend, SoftwareForACpuRasterizerOrNoOpenGLAndNeverOverTheUsersChoice)
{
    const std::pair<const char *, bool> renderers[] = { { "llvmpipe (LLVM 15.0.6, 256 bits)", true },
        { "SWR (LLVM 11.0.1, 256 bits)", true }, { "", true },
        { "AMD Radeon RX 6600 (navi23, LLVM 15.0.6)", false }, { "SVGA3D; build: RELEASE; LLVM;", false } };
    for (const auto &[renderer, software] : renderers) {
        EXPECT_EQ(prefersSoftwareSceneGraph(false, renderer), software) << renderer;
        EXPECT_FALSE(prefersSoftwareSceneGraph(true, renderer)) << renderer;
    }
}

} // namespace
} // namespace brivanta
