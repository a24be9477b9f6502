#pragma once

#include "recorder/RecorderViewModel.h"
#include "screens/CaseFolding.h"
#include "screens/KeyedListModel.h"
#include "settings/AppLanguage.h"

#include <QTimer>

#include <memory>

namespace talvenor {

/// The sidebar's list: the recordings whose title holds the search text, in the order of the view model.
///
/// Main thread. A text of spaces is a search like any other; only titles are searched, regardless of case
/// (see foldCase). What a row shows is worked out once and kept until its recording changes: titles are
/// folded when they are first searched, dates written when they are first shown.
class RecordingListModel final : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    // That of the base class, which the type descriptions for QML leave out.
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectedRowChanged)
    Q_PROPERTY(int currentRow READ currentRow WRITE setCurrentRow NOTIFY currentRowChanged)

public:
    enum Role {
        idRole = Qt::UserRole + 1,
        titleRole, ///< in one line
        nameRole,  ///< as it is spoken: the whole title in one line, or what stands for an empty one
        dateRole,
        durationRole,
        statusRole,
        statusTextRole,
        symbolRole,
        symbolColorRole, ///< the name of the theme's property
        selectedRole
    };

    /// Longer titles are cut where they are shown: no screen is that wide, and laying out megabytes takes
    /// seconds.
    static constexpr qsizetype longestShownTitle = 500;

    /// `viewModel` outlives the model.
    explicit RecordingListModel(RecorderViewModel &viewModel, QObject *parent = nullptr);
    ~RecordingListModel() override;
    Q_DISABLE_COPY_MOVE(RecordingListModel)

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QString &searchText() const { return m_searchText; }
    void setSearchText(const QString &text);
    /// The first row of the selected recording, -1 if it is not listed.
    [[nodiscard]] int selectedRow() const;

    /// The row that the keyboard acts on; it stays with its recording while others come and go, and in its
    /// place when that is deleted. -1 for none.
    [[nodiscard]] int currentRow() const { return m_current.isValid() ? m_current.row() : -1; }
    void setCurrentRow(int row);

    /// Makes the row's recording the selected one; a row that does not exist is passed over.
    Q_INVOKABLE void select(int row);

    // What a menu offers. It stays open while rows come and go, so its recording is named by `id`, as idRole
    // gives it; where no recording has it any more, nothing is offered and nothing happens. Whether the
    // search still lists the recording makes no difference.

    /// Has neither transcript nor work under way.
    Q_INVOKABLE bool canTranscribe(const QString &id) const;
    /// Has a transcript, no summary and no work under way.
    Q_INVOKABLE bool canSummarize(const QString &id) const;
    Q_INVOKABLE void transcribe(const QString &id);
    Q_INVOKABLE void summarize(const QString &id);
    Q_INVOKABLE void exportRecording(const QString &id);
    /// Deletes without asking.
    Q_INVOKABLE void deleteRecording(const QString &id);

Q_SIGNALS:
    void searchTextChanged();
    void selectedRowChanged();
    void currentRowChanged();

private:
    struct Entry;
    using Entries = QList<std::shared_ptr<const Entry>>; ///< shared by all that list a recording

    void refresh();
    void refreshSelection();
    void refreshLanguage();
    /// Shows `next`, and announces which rows that changes.
    void showRows(const Entries &next);
    [[nodiscard]] Entries currentEntries() const;
    [[nodiscard]] Entries filtered(const Entries &entries) const;
    void foldSomeTitles();
    [[nodiscard]] std::optional<Recording> recordingWithId(const QString &id) const;

    RecorderViewModel &m_viewModel;
    QString m_searchText;
    QString m_foldedText;
    Entries m_entries;  ///< of all recordings
    Entries m_rows;     ///< those of them that are listed
    QUuid m_selectedId; ///< null without a selection
    QPersistentModelIndex m_current;
    QUuid m_currentId; ///< for when all rows have been replaced
    AppLanguage m_language;
    CaseFolding m_folding;
    QTimer m_idle;               ///< runs while there are titles that have not been folded
    qsizetype m_foldedCount = 0; ///< of the first entries
};

} // namespace talvenor
