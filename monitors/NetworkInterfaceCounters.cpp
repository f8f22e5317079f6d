#include "monitors/NetworkInterfaceCounters.h"

#include "core/SmallFile.h"
#include "monitors/TextScan.h"

namespace tallowmere {

std::optional<ByteCounts> parseProcNetDev(std::string_view text)
{
    std::optional<ByteCounts> total;
    LineScanner lines(text);
    while (const auto line = lines.next()) {
        // "  eth0: rxbytes rxpackets ... (8 receive fields) txbytes ...". A large counter may
        // follow the colon without a blank; the two header lines have no colon at all.
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos)
            continue;
        FieldScanner nameScan(line->substr(0, colon));
        const auto name = nameScan.next();
        if (!name || name->find('|') != std::string_view::npos)
            continue;
        FieldScanner fields(line->substr(colon + 1));
        const auto receivedField = fields.next();
        if (!receivedField || !fields.skip(7))
            continue;
        const auto sentField = fields.next();
        if (!sentField)
            continue;
        const auto received = parseDecimal(*receivedField);
        const auto sent = parseDecimal(*sentField);
        if (!received || !sent)
            continue;
        if (!total)
            total = ByteCounts{};
        if (name->starts_with("lo"))
            continue;
        total->inBytes += *received;
        total->outBytes += *sent;
    }
    return total;
}

NetworkInterfaceCounters::NetworkInterfaceCounters(std::string procRoot)
    : path_(std::move(procRoot) + "/net/dev")
{
}

ByteCounts NetworkInterfaceCounters::read()
{
    if (!readSmallFile(path_, buffer_))
        return {};
    return parseProcNetDev(buffer_).value_or(ByteCounts{});
}

} // namespace tallowmere
