// Runs every file of the given directories through the fuzz entry once, so that the seed corpus is
// replayed by the normal test suite (and its sanitizer build) without libFuzzer.
#include <QDir>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    int replayed = 0;
    for (int i = 1; i < argc; ++i) {
        const QDir dir(QString::fromLocal8Bit(argv[i]));
        for (const QString &name : dir.entryList(QDir::Files, QDir::Name)) {
            QFile file(dir.filePath(name));
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(
                reinterpret_cast<const std::uint8_t *>(bytes.constData()), std::size_t(bytes.size()));
            ++replayed;
        }
    }
    std::printf("replayed %d inputs\n", replayed);
    return replayed > 0 ? 0 : 1; // an empty corpus would pass without checking anything
}
