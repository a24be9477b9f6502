#pragma once

#include "server/summaries/Transcript.h"

#include <string>
#include <vector>

namespace talvenor::server {

/// The people who speak in a meeting, in the order in which they come up, each once.
///
/// 1. Speaker labels are names as they stand.
/// 2. Who says "my name is X", "mein Name ist X", "ich heiße X", "I'm called X" is X, whatever X is, unless
/// it
///    is a word of no meaning.
/// 3. After "I am", "I'm", "this is", "ich bin", "hier ist", "hier spricht" stands a name, and after
/// "thanks",
///    "thank you", "danke", "vielen Dank" the name of somebody addressed, if X is a common given name; or,
///    where capital letters mean something, a capitalised word that is no ordinary noun or adjective in that
///    place; or any word that "speaking", "here", "am Apparat" follows (not after thanks), or, after "I am",
///    "I'm" and "ich bin", "from", "vom", "von", "aus".
/// 4. A capitalised word directly after the given name is the family name.
///
/// Matching ignores case, because a recogniser may give lower case only; names are given with capitals.
[[nodiscard]] std::vector<std::string> namesIn(const Transcript &transcript);

} // namespace talvenor::server
