#pragma once

#include <QDateTime>
#include <QString>

namespace talvenor {

/// `instant` in medium date style and short time style as ICU defines the two, in the local time zone and in
/// the locale of the system for dates (LC_ALL, LC_TIME, LANG). Any thread.
[[nodiscard]] QString formatMediumDateShortTime(const QDateTime &instant);

/// `instant` in the local time zone by a fixed pattern of ICU's date format syntax without zone fields, such
/// as "dd.MM.yyyy HH:mm", and without regard to the locale. A malformed pattern is a programming error. Any
/// thread.
[[nodiscard]] QString formatDatePattern(const QDateTime &instant, const QString &pattern);

/// A rounded size with a decimal unit, in the system's locale: whole bytes and kilobytes, one decimal from
/// megabytes on, two from gigabytes on ("512 bytes", "48 kB", "1.2 MB", "3.14 GB"). Any thread.
[[nodiscard]] QString formatByteCount(qint64 bytes);

} // namespace talvenor
