#pragma once

#include "server/accounts/Accounts.h"
#include "server/http/Router.h"
#include "server/summaries/Summarizer.h"

namespace talvenor::server {

/// What GET /versions/latest tells: the newest release of the application that this service knows.
struct Release
{
    std::string version;
    std::int64_t buildNumber = 1;
};

/// Adds the endpoints of accounts: registration, login, profile, password, recording log. `accounts` must
/// outlive the router.
void addAccountEndpoints(Router &router, Accounts &accounts);

/// Adds POST /summarize. Both must outlive the router.
void addSummaryEndpoint(Router &router, Accounts &accounts, Summarizer &summarizer);

/// Adds GET /versions/latest.
void addVersionEndpoint(Router &router, const Release &release);

} // namespace talvenor::server
