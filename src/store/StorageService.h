#pragma once

#include "foundation/Task.h"
#include "store/Recording.h"

#include <QList>
#include <QString>

#include <memory>

namespace talvenor {

class RecordingsWriter;

/// The one keeper of recordings on disk: the list in `recordings.json`, the audio files beside it, the
/// Markdown export and the size of it all.
///
/// It holds no list of its own. All paths are derived anew at each call from AppSettings, so a storage folder
/// that is changed takes effect at the next call; nothing is moved. Failures of loading and saving are told
/// on standard output alone.
///
/// Main thread, except where a function says otherwise. What takes time is done elsewhere: saving only takes
/// a snapshot, which a thread of its own encodes and writes.
class StorageService
{
public:
    /// The instance of the process, made on first use. Its end, with the process, writes out what is waiting.
    [[nodiscard]] static StorageService &shared();

    StorageService(const StorageService &) = delete;
    StorageService &operator=(const StorageService &) = delete;

    /// The list as it was saved last, in the order of the file; what is still being written counts as saved.
    ///
    /// Blocks for the time of reading the file. Without a file the list is empty; so it is when the file
    /// cannot be read or one element of it is not exactly as it should be, which is also printed as
    /// "Failed to load recordings: ". The file stays as it is until the next save.
    [[nodiscard]] QList<Recording> loadRecordings();

    /// Saves the whole list, as it is now, in the folder that is set now. Returns at once.
    ///
    /// Saves are written one after another in the order of the calls, each of them, each atomically: whatever
    /// happens, the file is a complete older or newer one. A failure is printed as
    /// "Failed to save recordings: " and leaves the older file.
    void saveRecordings(const QList<Recording> &list);

    /// Ends when every save asked for until now is on the disk or has failed. Never throws. Needs the event
    /// loop of the calling thread.
    [[nodiscard]] Task<> allSaved();

    /// As `allSaved`, but blocks; for the end of the program. Any thread.
    void waitUntilSaved();

    /// The path of the recording's audio file, whose folder is created if need be.
    ///
    /// The name may come from a file that somebody else has written. It is therefore always one name inside
    /// the audio folder: separators in it become underscores.
    [[nodiscard]] QString audioFileURL(const Recording &recording);

    /// A name for a new audio file, made from the local time down to the second. Two within one second are
    /// the same.
    [[nodiscard]] QString generateAudioFileName();

    /// Removes the recording's audio file if it can, every entry with the recording's `id` from `list`, and
    /// saves the list. A recorded name that is not a plain file name removes no file.
    void deleteRecording(const Recording &recording, QList<Recording> &list);

    /// Writes the recording as Markdown to the path `url`, atomically, in the language of the application.
    /// Throws PlatformError. Any thread; blocks for the time of writing.
    void exportTranscript(const Recording &recording, const QString &url);

    /// The size of everything in the storage folder and below, rounded and with a unit, in the system's
    /// locale; "0 MB" if the folder cannot be listed. Blocks for the time of listing the folder.
    [[nodiscard]] QString storageSizeFormatted();

private:
    StorageService();
    ~StorageService();

    std::unique_ptr<RecordingsWriter> m_writer;
};

} // namespace talvenor
