#include "server/operation/CommandLine.h"

#include "server/operation/Commands.h"
#include "server/operation/Version.h"

#include <boost/program_options.hpp>

#include <charconv>
#include <iostream>
#include <stdexcept>
#include <sys/stat.h>

namespace talvenor::server {

namespace {

namespace po = boost::program_options;

constexpr const char *usage = R"(talvenor-service: accounts, plans and summaries for Talvenor

  talvenor-service serve [--data DIR] [--listen ADDRESS:PORT]
      Serves until it is told to end. Port 0 takes a free one. Default: 127.0.0.1:8787

  talvenor-service account create --email ADDRESS --name NAME [--tier TIER] [--role ROLE]
                                  [--password-stdin] [--data DIR]
      Makes an account. Without --password-stdin a password is made and printed once.

  talvenor-service account set --email ADDRESS [--tier TIER] [--role ROLE] [--data DIR]
      Changes an account.

  talvenor-service --help | --version

Tiers: free, basic, premium, lifetime. Roles: user, admin.
DIR is $XDG_DATA_HOME/talvenor-service where it is not given.
The account commands work while the service runs.
)";

/// A command line that is not understood.
class UsageError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

po::variables_map parsed(const std::vector<std::string> &arguments, const po::options_description &options)
{
    try {
        const auto found = po::command_line_parser(arguments)
                               .options(options)
                               .positional({}) // What is no option is an error.
                               .run();
        po::variables_map values;
        po::store(found, values);
        po::notify(values);
        return values;
    } catch (const po::error &error) {
        throw UsageError(error.what());
    }
}

std::filesystem::path dataFolder(const po::variables_map &values)
{
    if (values.count("data") == 0)
        return defaultDataFolder();
    return values["data"].as<std::string>();
}

/// Splits "127.0.0.1:8787" or "[::1]:8787".
void parseListen(const std::string &text, ServeCommand &command)
{
    const std::size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        throw UsageError("--listen needs ADDRESS:PORT");
    std::string address = text.substr(0, colon);
    if (address.size() > 2 && address.front() == '[' && address.back() == ']')
        address = address.substr(1, address.size() - 2);
    const char *const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + colon + 1, end, command.port);
    if (error != std::errc() || rest != end || address.empty())
        throw UsageError("--listen needs ADDRESS:PORT");
    command.address = address == "localhost" ? "127.0.0.1" : address;
}

int runServe(const std::vector<std::string> &arguments)
{
    po::options_description options;
    options.add_options()("data", po::value<std::string>())(
        "listen", po::value<std::string>()->default_value("127.0.0.1:8787"));
    const auto values = parsed(arguments, options);
    ServeCommand command;
    parseListen(values["listen"].as<std::string>(), command);
    command.dataFolder = dataFolder(values);
    return serve(command);
}

int runAccount(const std::vector<std::string> &arguments)
{
    const std::string action = arguments.empty() ? "" : arguments.front();
    if (action != "create" && action != "set")
        throw UsageError("account needs create or set");
    po::options_description options;
    options.add_options()("data", po::value<std::string>())("email", po::value<std::string>()->required())(
        "tier", po::value<std::string>())("role", po::value<std::string>());
    if (action == "create")
        options.add_options()("name", po::value<std::string>()->required())("password-stdin",
                                                                            po::bool_switch());
    const auto values = parsed({arguments.begin() + 1, arguments.end()}, options);
    AccountCommand command;
    command.dataFolder = dataFolder(values);
    command.email = values["email"].as<std::string>();
    if (values.count("tier") > 0)
        command.tier = values["tier"].as<std::string>();
    if (values.count("role") > 0)
        command.role = values["role"].as<std::string>();
    if (action == "set")
        return setAccount(command);
    command.name = values["name"].as<std::string>();
    command.passwordFromInput = values["password-stdin"].as<bool>();
    return createAccount(command);
}

int run(const std::vector<std::string> &arguments)
{
    if (arguments.empty())
        throw UsageError("a command is missing");
    const std::string &command = arguments.front();
    if (command == "--help" || command == "-h") {
        std::cout << usage << std::flush;
        return 0;
    }
    if (command == "--version") {
        std::cout << "talvenor-service " << programVersion() << std::endl;
        return 0;
    }
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (command == "serve")
        return runServe(rest);
    if (command == "account")
        return runAccount(rest);
    throw UsageError("unknown command \"" + command + "\"");
}

} // namespace

int runCommandLine(const std::vector<std::string> &arguments)
{
    // Whatever this program writes is for its own user: it holds accounts.
    ::umask(S_IRWXG | S_IRWXO);
    try {
        return run(arguments);
    } catch (const UsageError &error) {
        std::cerr << "talvenor-service: " << error.what() << "\n\n" << usage << std::flush;
        return 2;
    } catch (const std::exception &error) {
        std::cerr << "talvenor-service: " << error.what() << std::endl;
        return 1;
    }
}

} // namespace talvenor::server
