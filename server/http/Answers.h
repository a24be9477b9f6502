#pragma once

#include "server/common/Language.h"
#include "server/common/Refusal.h"
#include "server/http/HttpMessage.h"

#include <string>

namespace talvenor::server {

/// The HTTP status of a refusal.
[[nodiscard]] int statusOf(Reason reason);

/// The sentence that tells a person why.
[[nodiscard]] std::string textOf(const Refusal &refusal, Language language);

/// The answer to a request that is refused: {"error": text}.
[[nodiscard]] HttpResponse answerTo(const Refusal &refusal, Language language);

} // namespace talvenor::server
