// A feed document as the update server sends it; its lines also go through the check that
// archive entry names stay inside the unpacking folder.
#include "update/AppcastParser.h"
#include "update/ArchiveSafety.h"

#include <cstdint>

using namespace tallowmere;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    (void)AppcastParser::parse(bytes);
    (void)firstEscapingEntry(QString::fromUtf8(bytes).split(u'\n'));
    return 0;
}
