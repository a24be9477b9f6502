#include "platform/linux/speech/SpeechModels.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QtEndian>

#include <array>

namespace talvenor {

namespace {

constexpr quint32 kWhisperMagic = 0x67676d6c;
constexpr qint32 kEnglishVocabulary = 51864;
// The smallest model, in its smallest quantisation, has more than 20 MB; what is below was cut short.
constexpr qint64 kSmallestWhisperModel = 8'000'000;

// Why the file is no model; absent if it is one, which `model` then describes.
std::optional<QString> examineWhisperModel(const QFileInfo &information, WhisperModel &model)
{
    QFile file(information.filePath());
    if (!information.isFile() || !file.open(QIODevice::ReadOnly))
        return information.filePath() + QStringLiteral(" cannot be read");
    const QByteArray head = file.read(8);
    if (head.size() < 8 || qFromLittleEndian<quint32>(head.constData()) != kWhisperMagic)
        return information.filePath() + QStringLiteral(" is not a whisper.cpp model");
    const auto vocabulary = qFromLittleEndian<qint32>(head.constData() + 4);
    if (vocabulary < kEnglishVocabulary || vocabulary > 2 * kEnglishVocabulary)
        return information.filePath() + QStringLiteral(" is not a whisper.cpp model for speech");
    if (file.size() < kSmallestWhisperModel)
        return information.filePath() + QStringLiteral(" is too small to be complete");
    model = {information.filePath(), vocabulary > kEnglishVocabulary};
    return std::nullopt;
}

bool isNotEmptyFile(const QString &path)
{
    const QFileInfo information(path);
    return information.isFile() && information.size() > 0;
}

// True for a binary model definition that is shorter than its own head says.
bool isCutShort(const QString &modelDefinition)
{
    constexpr qint64 kFixedHead = 12; // magic number, version, length of a description that follows
    constexpr qint64 kCounts = 40;
    QFile file(modelDefinition);
    if (!file.open(QIODevice::ReadOnly))
        return true;
    const QByteArray head = file.read(kFixedHead);
    if (!head.startsWith("BMDF"))
        return false; // the form in text is checked by the library
    if (head.size() < kFixedHead)
        return true;
    const auto descriptionLength = qFromLittleEndian<qint32>(head.constData() + 8);
    if (descriptionLength < 0 || !file.seek(kFixedHead + descriptionLength))
        return true;
    const QByteArray numbers = file.read(kCounts);
    if (numbers.size() < kCounts)
        return true;
    const auto count = [&numbers](int index) {
        return std::max<qint64>(0, qFromLittleEndian<qint32>(numbers.constData() + 4 * index));
    };
    const qint64 phones = count(1);
    const qint64 states = count(2);
    const qint64 sequences = count(6);
    const qint64 treeNodes = count(8);
    return file.size() <
           kFixedHead + descriptionLength + kCounts + 8 * treeNodes + 12 * phones + 2 * sequences * states;
}

} // namespace

QStringList speechModelFolders()
{
    const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return {data + QStringLiteral("/talvenor/speech"), data + QStringLiteral("/whisper"),
            QStringLiteral("/usr/share/whisper-models"), QStringLiteral("/usr/share/whisper.cpp"),
            QStringLiteral(TALVENOR_POCKETSPHINX_MODEL_FOLDER)};
}

ModelSearch<WhisperModel> findWhisperModel(const QStringList &folders, bool needsMultilingual)
{
    ModelSearch<WhisperModel> search;
    for (const QString &folder : folders) {
        const QFileInfoList candidates =
            QDir(folder).entryInfoList({QStringLiteral("ggml-*.bin")}, QDir::Files, QDir::Size);
        for (const QFileInfo &candidate : candidates) {
            WhisperModel model;
            if (const auto problem = examineWhisperModel(candidate, model)) {
                search.problems.append(*problem);
            } else if (needsMultilingual && !model.isMultilingual) {
                search.problems.append(candidate.filePath() + QStringLiteral(" is for English only"));
            } else {
                search.model = model;
                return search;
            }
        }
    }
    search.problems.append(QStringLiteral("no usable ggml-*.bin in ") + folders.join(QStringLiteral(", ")));
    return search;
}

std::optional<QString> incompleteFile(const PocketSphinxModel &model)
{
    const std::array<QString, 8> files{
        model.acousticModel + QStringLiteral("/mdef"),
        model.acousticModel + QStringLiteral("/feat.params"),
        model.acousticModel + QStringLiteral("/sendump"),
        model.acousticModel + QStringLiteral("/means"),
        model.acousticModel + QStringLiteral("/variances"),
        model.acousticModel + QStringLiteral("/transition_matrices"),
        model.languageModel,
        model.dictionary,
    };
    for (const QString &file : files) {
        if (!isNotEmptyFile(file))
            return file;
    }
    if (isCutShort(files[0]))
        return files[0];
    return std::nullopt;
}

ModelSearch<PocketSphinxModel> findPocketSphinxModel(const QStringList &folders)
{
    ModelSearch<PocketSphinxModel> search;
    for (const QString &folder : folders) {
        const QString root = folder + QStringLiteral("/en-us");
        if (!QFileInfo(root).isDir())
            continue;
        const PocketSphinxModel model{root + QStringLiteral("/en-us"), root + QStringLiteral("/en-us.lm.bin"),
                                      root + QStringLiteral("/cmudict-en-us.dict")};
        if (const auto incomplete = incompleteFile(model)) {
            search.problems.append(*incomplete + QStringLiteral(" is missing, empty or cut short"));
        } else {
            search.model = model;
            return search;
        }
    }
    search.problems.append(QStringLiteral("no complete folder en-us in ") +
                           folders.join(QStringLiteral(", ")));
    return search;
}

} // namespace talvenor
