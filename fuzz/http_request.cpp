// The request reader fed the same bytes whole and in pieces: both must agree, whatever the
// pieces. The first byte seeds the piece sizes; the rest is what a client sends.
#include "server/HTTPRequest.h"
#include "server/LoopbackAccess.h"

#include <cstdint>
#include <cstdlib>

using namespace tallowmere;

namespace {

struct Outcome {
    RequestReader::Status status;
    HTTPRequest request;
};

template <typename NextSize>
Outcome read(const char* data, qsizetype size, NextSize nextSize)
{
    RequestReader reader(RequestLimits{4096, 8192});
    RequestReader::Status status = RequestReader::Status::incomplete;
    for (qsizetype at = 0; at < size && status == RequestReader::Status::incomplete;) {
        const qsizetype piece = std::min<qsizetype>(nextSize(), size - at);
        status = reader.append(data + at, piece);
        at += piece;
    }
    Outcome outcome{status, {}};
    if (status == RequestReader::Status::complete)
        outcome.request = reader.take();
    return outcome;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 1)
        return 0;
    std::uint32_t state = data[0] * 2654435761u + 1;
    const auto bytes = reinterpret_cast<const char*>(data + 1);
    const auto length = static_cast<qsizetype>(size - 1);

    const Outcome whole = read(bytes, length, [&] { return length; });
    const Outcome split = read(bytes, length, [&] {
        state = state * 1103515245u + 12345u;
        return static_cast<qsizetype>(1 + (state >> 16) % 64);
    });
    if (whole.status != split.status || whole.request.method != split.request.method
        || whole.request.path != split.request.path || whole.request.headers != split.request.headers
        || whole.request.body != split.request.body)
        std::abort();

    if (whole.status == RequestReader::Status::complete) {
        HTTPResponse response{"200 OK", "text/plain", {}};
        if (!refuseForeignRequest(whole.request, 8765)) {
            if (const auto preflight = answerPreflight(whole.request))
                response = *preflight;
            allowRequestingOrigin(response, whole.request);
        }
        (void)frameResponse(response);
    }
    return 0;
}
