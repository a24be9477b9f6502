#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace talvenor::server {

/// What "serve" is told.
struct ServeCommand
{
    std::filesystem::path dataFolder;
    std::string address;
    std::uint16_t port = 0;
};

/// What "account create" and "account set" are told.
struct AccountCommand
{
    std::filesystem::path dataFolder;
    std::string email;
    std::string name;
    std::optional<std::string> tier;
    std::optional<std::string> role;
    bool passwordFromInput = false;
};

/// Serves until SIGTERM or SIGINT. Gives the exit code.
int serve(const ServeCommand &command);
/// Makes an account; prints the password if it had to make one. Gives the exit code.
int createAccount(const AccountCommand &command);
/// Changes an account's tier or role. Gives the exit code.
int setAccount(const AccountCommand &command);

/// $XDG_DATA_HOME/talvenor-service, or the same in ~/.local/share.
[[nodiscard]] std::filesystem::path defaultDataFolder();

} // namespace talvenor::server
