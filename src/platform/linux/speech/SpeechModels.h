#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace talvenor {

/// A model file of whisper.cpp.
struct WhisperModel
{
    QString path;
    bool isMultilingual = false; ///< an English-only model takes any language for English, without a word
};

/// The parts of a PocketSphinx model.
struct PocketSphinxModel
{
    QString acousticModel; ///< a folder
    QString languageModel; ///< a file
    QString dictionary;    ///< a file
};

/// What a search has found, and why it has not taken what it passed by.
template<typename Model>
struct ModelSearch
{
    std::optional<Model> model;
    QStringList problems; ///< for the log: each names a file and a place
};

/// Where speech models are looked for, the user's own folders first.
[[nodiscard]] QStringList speechModelFolders();

/// The largest valid `ggml-*.bin` in the first of `folders` that has one for the language;
/// `needsMultilingual` for every language but English. Reads the head of each file. Format of the head:
/// whisper.cpp writes the magic number 0x67676d6c and the vocabulary size as 32-bit little-endian integers.
[[nodiscard]] ModelSearch<WhisperModel> findWhisperModel(const QStringList &folders, bool needsMultilingual);

/// The first complete American English model, as Debian's package lays it out: `en-us/en-us/` with the
/// acoustic model, `en-us/en-us.lm.bin` and `en-us/cmudict-en-us.dict`.
[[nodiscard]] ModelSearch<PocketSphinxModel> findPocketSphinxModel(const QStringList &folders);

/// The first file of `model` that is missing, empty or, as far as that can be told, cut short; absent if it
/// is complete. Of the binary `mdef`, which the library reads beyond its end, the counts in the head tell the
/// least size: 8 bytes for each node of the tree, 12 for each phone and 2 for each state of a senone
/// sequence.
[[nodiscard]] std::optional<QString> incompleteFile(const PocketSphinxModel &model);

} // namespace talvenor
