#include "server/operation/Commands.h"

#include "server/accounts/Accounts.h"
#include "server/common/Refusal.h"
#include "server/http/Answers.h"
#include "server/storage/SqliteAccountStore.h"

#include <cstdlib>
#include <iostream>

namespace talvenor::server {

namespace {

/// 96 random bits, short enough to be typed once.
constexpr std::size_t generatedPassword = 16;

/// The accounts in a data folder, for one command. Works beside a running service.
struct OpenAccounts
{
    explicit OpenAccounts(const std::filesystem::path &folder) : database(folder) {}

    SqliteDatabase database;
    SqliteAccountStore store{database};
    PasswordHasher hasher;
    Accounts accounts{store, hasher, LoginLimits{}, systemTime};
};

template<typename Value, typename Parse>
std::optional<Value> parsed(const std::optional<std::string> &text, const char *option, Parse parse)
{
    if (!text)
        return std::nullopt;
    const std::optional<Value> value = parse(*text);
    if (!value)
        throw std::runtime_error(std::string("--") + option + ": \"" + *text + "\" is not known.");
    return value;
}

void print(const Account &account)
{
    std::cout << account.email << ": tier " << name(account.tier) << ", role " << name(account.role)
              << std::endl;
}

int failed(const Refusal &refusal)
{
    if (refusal.reason() == Reason::notFound)
        std::cerr << "There is no account with this e-mail address." << std::endl;
    else
        std::cerr << textOf(refusal, Language::english) << std::endl;
    return 1;
}

} // namespace

int createAccount(const AccountCommand &command)
{
    const auto tier = parsed<Tier>(command.tier, "tier", tierNamed);
    const auto role = parsed<Role>(command.role, "role", roleNamed);
    std::string password;
    if (command.passwordFromInput) {
        std::getline(std::cin, password);
        if (!password.empty() && password.back() == '\r')
            password.pop_back();
    }
    OpenAccounts open(command.dataFolder);
    if (!command.passwordFromInput)
        password = newSessionToken().substr(0, generatedPassword);
    try {
        print(open.accounts.create(command.email, password, command.name, tier.value_or(Tier::free),
                                   role.value_or(Role::user)));
    } catch (const Refusal &refusal) {
        return failed(refusal);
    }
    if (!command.passwordFromInput)
        std::cout << "Password: " << password << std::endl;
    return 0;
}

int setAccount(const AccountCommand &command)
{
    const auto tier = parsed<Tier>(command.tier, "tier", tierNamed);
    const auto role = parsed<Role>(command.role, "role", roleNamed);
    if (!tier && !role)
        throw std::runtime_error("Nothing to set: give --tier or --role.");
    OpenAccounts open(command.dataFolder);
    try {
        print(open.accounts.update(command.email, tier, role));
    } catch (const Refusal &refusal) {
        return failed(refusal);
    }
    return 0;
}

std::filesystem::path defaultDataFolder()
{
    if (const char *const data = std::getenv("XDG_DATA_HOME"); data != nullptr && *data == '/')
        return std::filesystem::path(data) / "talvenor-service";
    const char *const home = std::getenv("HOME");
    if (home == nullptr || *home == '\0')
        throw std::runtime_error("HOME is not set; name a folder with --data.");
    return std::filesystem::path(home) / ".local/share/talvenor-service";
}

} // namespace talvenor::server
