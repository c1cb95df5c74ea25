// libFuzzer target for the property-list reader. Beyond "no crash, no hang", it
// checks that whatever the reader accepts, the writer writes so that the reader
// reads back the very same tree, and that a second write gives the same bytes.
#include "PropertyListReader.h"
#include "PropertyListWriter.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    PropertyListReader reader;
    const auto value =
        reader.read(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    if (!value)
        return 0;
    const auto written = PropertyListWriter::write(*value);
    if (!written)
        std::abort(); // the reader's depth bound is below the writer's
    PropertyListReader again;
    const auto reread = again.read(*written);
    if (!reread || !(*reread == *value))
        std::abort();
    if (PropertyListWriter::write(*reread) != written)
        std::abort();
    return 0;
}
