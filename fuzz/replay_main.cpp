// Runs every file of the given directories through the fuzz entry once, so that the seed corpus is
// replayed by the normal test suite (and its sanitizer build) without libFuzzer.
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QFileInfoList entries
            = QDir(QString::fromLocal8Bit(argv[i])).entryInfoList(QDir::Files, QDir::Name);
        for (const QFileInfo &entry : entries) {
            QFile file(entry.filePath());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(entry.filePath()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                static_cast<std::size_t>(bytes.size()));
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    // An empty corpus would make the replay test pass without checking anything.
    return replayed > 0 ? 0 : 1;
}
