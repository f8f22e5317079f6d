#pragma once

#include "server/HTTPRequest.h"
#include "server/HTTPResponse.h"

#include <QStringView>

#include <optional>

namespace tallowmere {

// The server is for programs on this machine. A web page the user happens to open must not
// read it or call its tools, neither from its own origin nor through a DNS name rebound to
// 127.0.0.1. Browsers always send Host and, on cross-origin requests, Origin; both must name
// this machine's loopback.

// `Host` names 127.0.0.1, localhost or [::1] (any case) with exactly our port.
bool isLoopbackHost(QStringView host, quint16 port);

// `Origin` is http:// 127.0.0.1, localhost or [::1], with or without a port.
bool isLoopbackOrigin(QStringView origin);

// The refusal for a request that did not come from this machine's own pages or clients:
// 421 for a foreign Host, 403 for a foreign Origin. Nothing when the request may be served.
std::optional<HTTPResponse> refuseForeignRequest(const HTTPRequest& request, quint16 port);

// The answer to a CORS preflight (OPTIONS with an Origin), or nothing for any other request.
// Call after refuseForeignRequest(), which has already turned foreign origins away.
std::optional<HTTPResponse> answerPreflight(const HTTPRequest& request);

// Lets the page that sent a loopback Origin read the answer: its origin echoed back.
void allowRequestingOrigin(HTTPResponse& response, const HTTPRequest& request);

} // namespace tallowmere
