// Reads an XML property list and writes it again, as "plistutil -i IN -o OUT
// -f xml" does, so that the two can be timed on the same file.
#include "PropertyListReader.h"
#include "PropertyListWriter.h"

#include <QFile>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench_plist_convert IN OUT\n");
        return 2;
    }
    QFile in(QString::fromLocal8Bit(argv[1]));
    if (!in.open(QIODevice::ReadOnly))
        return 1;
    PropertyListReader reader(1 << 30);
    const auto value = reader.read(in.readAll());
    if (!value) {
        std::fprintf(stderr, "%s\n", qPrintable(reader.errorString()));
        return 1;
    }
    QFile out(QString::fromLocal8Bit(argv[2]));
    const auto bytes = PropertyListWriter::write(*value);
    return bytes && out.open(QIODevice::WriteOnly) && out.write(*bytes) == bytes->size() ? 0 : 1;
}
