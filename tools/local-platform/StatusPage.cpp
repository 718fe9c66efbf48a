#include "Answers.h"
#include "Refusal.h"
#include "Routes.h"
#include "StatusPageText.h"

namespace LocalPlatform {

void handlePageRequest(Platform &, Exchange &exchange)
{
    if (exchange.request->method != "GET" || !exchange.route.empty())
        throw Refusal(404, "unknown page");
    exchange.response->set_header("Content-Security-Policy",
                                  "default-src 'self'; script-src 'unsafe-inline'; style-src 'unsafe-inline'; frame-ancestors 'none'");
    answerText(exchange, 200, STATUS_PAGE, "text/html; charset=utf-8");
}

} // namespace LocalPlatform
