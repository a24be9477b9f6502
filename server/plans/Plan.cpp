#include "server/plans/Plan.h"

#include <algorithm>
#include <array>
#include <utility>

namespace talvenor::server {

namespace {

constexpr std::array tierNames = {
    std::pair<Tier, std::string_view>{Tier::free, "free"},
    std::pair<Tier, std::string_view>{Tier::basic, "basic"},
    std::pair<Tier, std::string_view>{Tier::premium, "premium"},
    std::pair<Tier, std::string_view>{Tier::lifetime, "lifetime"},
};

constexpr std::array roleNames = {
    std::pair<Role, std::string_view>{Role::user, "user"},
    std::pair<Role, std::string_view>{Role::admin, "admin"},
};

template<typename Names, typename Key>
std::string_view nameIn(const Names &names, Key key)
{
    return std::find_if(names.begin(), names.end(), [key](const auto &entry) { return entry.first == key; })
        ->second;
}

template<typename Key, typename Names>
std::optional<Key> keyIn(const Names &names, std::string_view name)
{
    const auto entry =
        std::find_if(names.begin(), names.end(), [name](const auto &each) { return each.second == name; });
    if (entry == names.end())
        return std::nullopt;
    return entry->first;
}

} // namespace

std::string_view name(Tier tier)
{
    return nameIn(tierNames, tier);
}

std::string_view name(Role role)
{
    return nameIn(roleNames, role);
}

std::optional<Tier> tierNamed(std::string_view name)
{
    return keyIn<Tier>(tierNames, name);
}

std::optional<Role> roleNamed(std::string_view name)
{
    return keyIn<Role>(roleNames, name);
}

std::optional<std::int64_t> monthlyRecordings(Tier tier, Role role)
{
    if (role == Role::admin)
        return std::nullopt;
    switch (tier) {
    case Tier::free:
        return 3;
    case Tier::basic:
        return 25;
    case Tier::premium:
    case Tier::lifetime:
        break;
    }
    return std::nullopt;
}

bool includesSummaries(Tier tier)
{
    return tier != Tier::free;
}

} // namespace talvenor::server
