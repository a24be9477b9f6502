#pragma once

#include "recorder/RecorderViewModel.h"
#include "screens/KeyedListModel.h"

namespace talvenor {

/// The sidebar's list: the recordings whose title holds the search text, in the order of the view model.
///
/// Main thread. A text of spaces is a search like any other; only titles are searched, regardless of case by
/// the rules of the system's locale.
class RecordingListModel : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectedRowChanged)

public:
    enum Role {
        idRole = Qt::UserRole + 1,
        titleRole,
        dateRole,
        durationRole,
        statusRole,
        statusTextRole,
        selectedRole
    };

    /// `viewModel` outlives the model.
    explicit RecordingListModel(RecorderViewModel &viewModel, QObject *parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QString &searchText() const { return m_searchText; }
    void setSearchText(const QString &text);
    /// The row of the selected recording, -1 if it is not listed.
    [[nodiscard]] int selectedRow() const;

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

private:
    void refresh();
    void refreshSelection();
    [[nodiscard]] std::optional<Recording> recordingWithId(const QString &id) const;

    RecorderViewModel &m_viewModel;
    QString m_searchText;
    QList<Recording> m_rows;
    QUuid m_selectedId; ///< null without a selection
};

} // namespace talvenor
