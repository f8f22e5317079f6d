// One buffer as received from a sock_diag dump numbered 7.
#include "monitors/SockDiagRecord.h"

#include <cstdint>

using namespace tallowmere;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const SockDiagChunk chunk = decodeSockDiagChunk({reinterpret_cast<const std::byte*>(data), size}, 7);
    for (const SockDiagRecord& record : chunk.records)
        (void)remoteAddressText(record);
    return 0;
}
