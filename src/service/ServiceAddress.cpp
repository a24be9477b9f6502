#include "service/ServiceAddress.h"

namespace talvenor {

QString serviceBaseURL()
{
    if (qEnvironmentVariableIsSet("TALVENOR_API_URL"))
        return qEnvironmentVariable("TALVENOR_API_URL");
    return QStringLiteral("https://" TALVENOR_SERVICE_HOST "/api");
}

} // namespace talvenor
