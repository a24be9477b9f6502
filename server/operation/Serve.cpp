#include "server/operation/Commands.h"

#include "server/operation/Service.h"
#include "server/operation/Version.h"

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/signal_set.hpp>

#include <csignal>
#include <iostream>
#include <unistd.h>

namespace talvenor::server {

namespace {

/// Sessions would be readable on the way: no TLS is spoken here.
void warnIfReachable(const std::string &address, Log &log)
{
    if (!boost::asio::ip::make_address(address).is_loopback())
        log.warning("reachable-without-tls", {{"address", address}});
}

} // namespace

int serve(const ServeCommand &command)
{
    // A reader of the log who goes away must not take the service along.
    std::signal(SIGPIPE, SIG_IGN);
    boost::asio::io_context context;
    boost::asio::signal_set signals(context, SIGTERM, SIGINT);

    Log log(STDERR_FILENO);
    const PasswordHasher hasher;
    ServiceOptions options;
    options.dataFolder = command.dataFolder;
    options.address = command.address;
    options.port = command.port;
    Service service(options, hasher, log);
    warnIfReachable(command.address, log);
    const std::string url = service.start();
    log.info("started", {{"version", programVersion()}});
    std::cout << "Listening on " << url << std::endl;

    signals.async_wait([](const boost::system::error_code &, int) {});
    context.run();
    log.info("stopping");
    service.stop();
    log.info("stopped");
    return 0;
}

} // namespace talvenor::server
