#pragma once

#include "foundation/LocalizedError.h"
#include "store/Recording.h"

#include <QList>
#include <QString>

namespace talvenor {

/// Why a list of recordings could not be read: where in the file and what was wrong there. For the printed
/// line; the user is not told.
class RecordingsFileError : public LocalizedError
{
public:
    explicit RecordingsFileError(QString description) : m_description(std::move(description)) {}
    [[nodiscard]] QString errorDescription() const override { return m_description; }

private:
    QString m_description;
};

/// The recordings in the file at `path`, in the order of the file.
///
/// All or nothing: a missing key, a value of another type, an unknown status, a date or an identifier in
/// another form anywhere throws RecordingsFileError, as does a file that is no well-formed JSON in UTF-8, is
/// nested more than a thousand deep or is larger than 4 GB. Unknown keys are passed over; of keys that come
/// twice the last one counts; a byte order mark at the start is no harm. Throws PlatformError if the file
/// cannot be read. Any thread; blocks.
[[nodiscard]] QList<Recording> readRecordings(const QString &path);

} // namespace talvenor
