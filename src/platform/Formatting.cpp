#include "platform/Formatting.h"

#include "foundation/ProgrammingError.h"

#include <QLocale>

#include <unicode/datefmt.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

namespace talvenor {

namespace {

/// The name of the locale for dates as the environment gives it, for instance "de_DE.UTF-8".
///
/// QLocale tells only the locale for numbers, and people do mix the two.
QByteArray dateLocaleName()
{
    for (const char *variable : {"LC_ALL", "LC_TIME", "LANG"}) {
        const QByteArray name = qgetenv(variable);
        if (name.isEmpty())
            continue;
        const QByteArray language = name.split('.').first();
        return language == "C" || language == "POSIX" ? QByteArrayLiteral("en_US_POSIX") : name;
    }
    return QByteArrayLiteral("en_US_POSIX");
}

/// What the clocks on the wall show at `instant`, as if they stood in Greenwich.
///
/// The formatters then work in that zone, so that the local zone is the C library's, also where TZ holds a
/// rule that ICU does not know.
UDate wallClock(const QDateTime &instant)
{
    const QDateTime local = instant.toLocalTime();
    return UDate(QDateTime(local.date(), local.time(), Qt::UTC).toMSecsSinceEpoch());
}

QString format(icu::DateFormat &formatter, const QDateTime &instant)
{
    formatter.setTimeZone(*icu::TimeZone::getGMT());
    icu::UnicodeString text;
    formatter.format(wallClock(instant), text);
    return QString(reinterpret_cast<const QChar *>(text.getBuffer()), text.length());
}

} // namespace

QString formatMediumDateShortTime(const QDateTime &instant)
{
    const icu::Locale locale = icu::Locale::createCanonical(dateLocaleName().constData());
    const std::unique_ptr<icu::DateFormat> formatter(
        icu::DateFormat::createDateTimeInstance(icu::DateFormat::kMedium, icu::DateFormat::kShort, locale));
    if (formatter)
        return format(*formatter, instant);
    // ICU without its data, as in a system that is being upgraded.
    return QLocale::system().toString(instant.toLocalTime(), QLocale::ShortFormat);
}

QString formatDatePattern(const QDateTime &instant, const QString &pattern)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString icuPattern(reinterpret_cast<const UChar *>(pattern.utf16()),
                                        int(pattern.size()));
    icu::SimpleDateFormat formatter(icuPattern, icu::Locale::getRoot(), status);
    if (U_FAILURE(status))
        programmingError(QStringLiteral("a date pattern that ICU does not take: ") + pattern);
    return format(formatter, instant);
}

QString formatByteCount(qint64 bytes)
{
    // The decimals of bytes, kilobytes, megabytes and everything above.
    static constexpr std::array decimals{0, 0, 1, 2};
    std::size_t unit = 0;
    double amount = double(bytes);
    double unitSize = 1;
    const auto rounded = [&] {
        const double scale = std::pow(10, decimals[std::min(unit, decimals.size() - 1)]);
        return std::round(amount * scale) / scale;
    };
    // What rounds to a thousand of one unit is one of the next.
    while (std::abs(rounded()) >= 1000 && unit < 6) {
        amount /= 1000;
        unitSize *= 1000;
        ++unit;
    }
    const int precision = decimals[std::min(unit, decimals.size() - 1)];
    // Qt chooses the unit by the exact number, hence the rounded one.
    return QLocale::system().formattedDataSize(qint64(std::llround(rounded() * unitSize)), precision,
                                               QLocale::DataSizeSIFormat);
}

} // namespace talvenor
