#include "platform/Formatting.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <memory>

namespace talvenor {

namespace {

QString format(const icu::DateFormat *formatter, const QDateTime &instant)
{
    if (formatter == nullptr)
        return QLocale::system().toString(instant.toLocalTime(), QLocale::ShortFormat);
    icu::UnicodeString text;
    formatter->format(UDate(instant.toMSecsSinceEpoch()), text);
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

} // namespace

QString formatMediumDateShortTime(const QDateTime &instant)
{
    const icu::Locale locale(QLocale::system().name().toLatin1().constData());
    const std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort, locale));
    return format(formatter.get(), instant);
}

QString formatDatePattern(const QDateTime &instant, const QString &pattern)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString icuPattern(reinterpret_cast<const UChar *>(pattern.utf16()),
                                        int(pattern.size()));
    const icu::SimpleDateFormat formatter(icuPattern, icu::Locale::getRoot(), status);
    return format(U_SUCCESS(status) ? &formatter : nullptr, instant);
}

QString formatByteCount(qint64 bytes)
{
    // Whole kilobytes, one decimal from megabytes on, two from gigabytes on: as precise as a reader needs.
    constexpr qint64 megabyte = 1'000'000;
    const int precision = bytes < megabyte ? 0 : (bytes < 1000 * megabyte ? 1 : 2);
    return QLocale::system().formattedDataSize(bytes, precision, QLocale::DataSizeSIFormat);
}

} // namespace talvenor
