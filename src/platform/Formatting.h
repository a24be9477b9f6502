#pragma once

#include <QDateTime>
#include <QString>

namespace talvenor {

/// `instant` in medium date style and short time style, in the system's locale and time zone, as ICU
/// defines the two styles. Any thread.
[[nodiscard]] QString formatMediumDateShortTime(const QDateTime &instant);

/// `instant` by a fixed pattern of ICU's date format syntax, in the local time zone and without regard to the
/// locale, such as "dd.MM.yyyy HH:mm". Any thread.
[[nodiscard]] QString formatDatePattern(const QDateTime &instant, const QString &pattern);

/// A rounded size with a decimal unit ("1.2 MB"), in the system's locale. Any thread.
[[nodiscard]] QString formatByteCount(qint64 bytes);

} // namespace talvenor
