#include "service/APIError.h"

#include "settings/L10n.h"

namespace talvenor {

QString APIError::errorDescription() const
{
    switch (m_case) {
    case Case::unauthorized:
        return L10n::isGerman() ? QStringLiteral("Sitzung abgelaufen. Bitte erneut anmelden.")
                                : QStringLiteral("Session expired. Please log in again.");
    case Case::decodingError:
        return L10n::isGerman() ? QStringLiteral("Daten konnten nicht verarbeitet werden.")
                                : QStringLiteral("Failed to process data.");
    case Case::network:
    case Case::forbidden:
    case Case::badRequest:
    case Case::serverError:
        break;
    }
    return m_text;
}

} // namespace talvenor
