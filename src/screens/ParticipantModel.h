#pragma once

#include "screens/KeyedListModel.h"
#include "store/Recording.h"

#include <optional>

namespace talvenor {

/// The people of the selected recording. Main thread.
class ParticipantModel : public KeyedListModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application makes it.")

public:
    enum Role { idRole = Qt::UserRole + 1, nameRole, initialRole, detectedRole };

    using KeyedListModel::KeyedListModel;

    [[nodiscard]] int rowCount(const QModelIndex &parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex &index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void setParticipants(const QList<Participant> &participants);

private:
    QList<Participant> m_participants;
};

/// The first user-perceived character of `name`, upper-cased, which can make two letters of it; empty for an
/// empty name.
[[nodiscard]] QString upperCasedInitial(const QString &name);

} // namespace talvenor
