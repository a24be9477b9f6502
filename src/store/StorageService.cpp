#include "store/StorageService.h"

#include "platform/AtomicFile.h"
#include "platform/Formatting.h"
#include "platform/PrintedLine.h"
#include "settings/AppSettings.h"
#include "store/MarkdownExport.h"
#include "store/RecordingsDecoder.h"
#include "store/RecordingsWriter.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>

#include <array>

namespace talvenor {

namespace {

QString listPath()
{
    return AppSettings::shared().storageURL() + QStringLiteral("/recordings.json");
}

/// Whether `name` names something directly inside a folder.
bool isPlainFileName(const QString &name)
{
    return !name.isEmpty() && name != u"." && name != u".." && !name.contains(u'/') &&
           !name.contains(QChar::Null);
}

/// `name`, or where it is no plain file name, one that is.
QString plainFileName(QString name)
{
    if (isPlainFileName(name))
        return name;
    name.replace(u'/', u'_').replace(QChar::Null, u'_');
    return isPlainFileName(name) ? name : name + u'_';
}

} // namespace

StorageService &StorageService::shared()
{
    static StorageService instance;
    return instance;
}

StorageService::StorageService() : m_writer(std::make_unique<RecordingsWriter>())
{
}

StorageService::~StorageService() = default;

QList<Recording> StorageService::loadRecordings()
{
    waitUntilSaved();
    const QString path = listPath();
    if (!QFileInfo::exists(path))
        return {};
    try {
        return readRecordings(path);
    } catch (...) {
        printLine(QStringLiteral("Failed to load recordings: ") +
                  localizedDescription(std::current_exception()));
        return {};
    }
}

void StorageService::saveRecordings(const QList<Recording> &list)
{
    m_writer->write(listPath(), list);
}

Task<> StorageService::allSaved()
{
    return m_writer->allWritten();
}

void StorageService::waitUntilSaved()
{
    m_writer->waitUntilWritten();
}

QString StorageService::audioFileURL(const Recording &recording)
{
    return AppSettings::shared().audioDirectory() + u'/' + plainFileName(recording.audioFileName);
}

QString StorageService::generateAudioFileName()
{
    return QStringLiteral("meeting_") +
           formatDatePattern(QDateTime::currentDateTime(), QStringLiteral("yyyy-MM-dd_HH-mm-ss")) +
           QStringLiteral(".m4a");
}

void StorageService::deleteRecording(const Recording &recording, QList<Recording> &list)
{
    // The argument may be an entry of the very list.
    const QUuid id = recording.id;
    // A file that is not there, or cannot be removed, does not keep the entry.
    if (isPlainFileName(recording.audioFileName))
        static_cast<void>(QFile::remove(audioFileURL(recording)));
    list.removeIf([&id](const Recording &entry) { return entry.id == id; });
    saveRecordings(list);
}

void StorageService::exportTranscript(const Recording &recording, const QString &url)
{
    const QByteArray text = markdownDocument(recording, AppSettings::shared().appLanguage()).toUtf8();
    writeFileAtomically(url, std::array{QByteArrayView(text)});
}

QString StorageService::storageSizeFormatted()
{
    const QString folder = AppSettings::shared().storageURL();
    const QFileInfo info(folder);
    if (!info.isDir() || !info.isReadable())
        return QStringLiteral("0 MB");
    qint64 sum = 0;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        entries.next();
        const QFileInfo entry = entries.fileInfo();
        // What a link names lies somewhere else, or is counted at its own place.
        if (entry.isFile() && !entry.isSymLink())
            sum += entry.size();
    }
    return formatByteCount(sum);
}

} // namespace talvenor
