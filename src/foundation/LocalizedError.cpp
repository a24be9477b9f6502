#include "foundation/LocalizedError.h"

namespace talvenor {

const char *LocalizedError::what() const noexcept
{
    m_what = errorDescription().toUtf8();
    return m_what.constData();
}

PlatformError::PlatformError(QString domain, int code, QString description)
    : m_domain(std::move(domain)), m_code(code), m_description(std::move(description))
{
}

QString localizedDescription(const std::exception_ptr &error)
{
    try {
        std::rethrow_exception(error);
    } catch (const LocalizedError &localized) {
        return localized.errorDescription();
    } catch (const std::exception &standard) {
        return QString::fromUtf8(standard.what());
    } catch (...) {
        return QStringLiteral("The operation could not be completed.");
    }
}

} // namespace talvenor
