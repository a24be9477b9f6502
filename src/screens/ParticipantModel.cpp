#include "screens/ParticipantModel.h"

#include <QTextBoundaryFinder>

namespace talvenor {

int ParticipantModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_participants.size());
}

QHash<int, QByteArray> ParticipantModel::roleNames() const
{
    return {{idRole, "participantId"},
            {nameRole, "name"},
            {initialRole, "initial"},
            {detectedRole, "isDetectedByAI"}};
}

QVariant ParticipantModel::data(const QModelIndex &index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const Participant &participant = m_participants.at(index.row());
    switch (role) {
    case idRole:
        return participant.id.toString();
    case nameRole:
        return participant.name;
    case initialRole:
        return upperCasedInitial(participant.name);
    case detectedRole:
        return participant.isDetectedByAI;
    default:
        return {};
    }
}

void ParticipantModel::setParticipants(const QList<Participant> &participants)
{
    replaceRows(
        m_participants, participants, [](const Participant &participant) { return participant.id; },
        [](const Participant &a, const Participant &b) { return a == b; });
}

QString upperCasedInitial(const QString &name)
{
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, name);
    const qsizetype end = finder.toNextBoundary();
    return end > 0 ? name.left(end).toUpper() : QString();
}

} // namespace talvenor
