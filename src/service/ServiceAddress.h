#pragma once

#include <QString>

namespace talvenor {

/// The address of the hosted service in use: `TALVENOR_API_URL` as it stands where it is set, an empty value
/// included, else the public host that the program was built for. Without a slash at its end in the latter
/// case; nothing is made of the former. Reads the environment at each call.
[[nodiscard]] QString serviceBaseURL();

} // namespace talvenor
