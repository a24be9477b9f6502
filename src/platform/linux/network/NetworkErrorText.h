#pragma once

#include <curl/curl.h>

#include <QString>

namespace talvenor {

/// Why a request failed, for the user, in the language of the system. Holds nothing of the request.
[[nodiscard]] QString networkErrorText(CURLcode code);

} // namespace talvenor
