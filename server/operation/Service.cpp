#include "server/operation/Service.h"

#include "server/operation/Version.h"
#include "server/summaries/ExtractiveSummarizer.h"

namespace talvenor::server {

Service::Service(const ServiceOptions &options, const PasswordHasher &hasher, Log &log)
    : m_options(options), m_database(options.dataFolder), m_store(m_database),
      m_accounts(m_store, hasher, options.logins, options.clock),
      m_summarizer(std::make_unique<ExtractiveSummarizer>()), m_http(m_router, log, options.http)
{
    addAccountEndpoints(m_router, m_accounts);
    addSummaryEndpoint(m_router, m_accounts, *m_summarizer);
    addVersionEndpoint(m_router, Release{programVersion(), programBuild()});
}

Service::~Service() = default;

std::string Service::start()
{
    const std::uint16_t port = m_http.start(m_options.address, m_options.port);
    const bool isIpv6 = m_options.address.find(':') != std::string::npos;
    const std::string host = isIpv6 ? "[" + m_options.address + "]" : m_options.address;
    return "http://" + host + ":" + std::to_string(port) + "/api";
}

void Service::stop()
{
    m_http.stop();
}

} // namespace talvenor::server
