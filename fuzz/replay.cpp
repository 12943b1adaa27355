// Runs the inputs of a corpus folder through a target, so that what a fuzzer once found stays
// mended on machines without one.

#include <QDir>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

int main(int argc, char* argv[])
{
    QDir const folder(QString::fromLocal8Bit(argc > 1 ? argv[1] : ""));
    QStringList const names = folder.entryList(QDir::Files);
    for (QString const& name : names) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly)) {
            std::printf("%s can't be read\n", qPrintable(file.fileName()));
            return 1;
        }
        QByteArray const input = file.readAll();
        LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.constData()),
                               std::size_t(input.size()));
    }
    std::printf("%d inputs\n", int(names.size()));
    return names.isEmpty() ? 1 : 0;
}
