#include "service/RequestBody.h"

#include "foundation/LocalizedError.h"
#include "platform/SystemLanguage.h"

#include <QJsonDocument>

#include <cmath>

namespace talvenor {

QByteArray serializedBody(const QJsonObject &body)
{
    // Qt would write null instead. The bodies of this service are flat, so one level is looked at.
    for (const QJsonValue &member : body) {
        if (member.isDouble() && !std::isfinite(member.toDouble()))
            throw PlatformError(
                QStringLiteral("json"), 1,
                systemSpeaksGerman()
                    ? QStringLiteral("Die Anfrage enthält eine Zahl, die sich nicht senden lässt.")
                    : QStringLiteral("The request holds a number that cannot be sent."));
    }
    return QJsonDocument(body).toJson(QJsonDocument::Compact);
}

} // namespace talvenor
