// The parsers of /proc and ps text. The first byte picks the parser; the rest is the file.
#include "monitors/CPUParsers.h"
#include "monitors/DiskParsers.h"
#include "monitors/MemoryParsers.h"
#include "monitors/NetworkInterfaceCounters.h"

#include <cstdint>
#include <string_view>

using namespace tallowmere;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
    static const std::set<std::string> disks = {"sda", "nvme0n1", "vda", "mmcblk0"};
    switch (data[0] % 7) {
    case 0:
        (void)parseCPUTicks(text);
        break;
    case 1:
        (void)parseProcessStat(text);
        break;
    case 2:
        (void)parseDiskStats(text, disks);
        break;
    case 3:
        (void)parseMemInfo(text, size);
        break;
    case 4:
        (void)parseZramMemUsed(text);
        break;
    case 5:
        (void)parsePsOutput(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
        break;
    case 6:
        (void)parseProcNetDev(text);
        break;
    }
    return 0;
}
