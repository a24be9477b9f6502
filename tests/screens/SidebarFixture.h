#pragma once

#include "RenderedScene.h"

#include "recorderfakes/RecorderFixture.h"
#include "screens/RecordState.h"
#include "screens/RecordingListModel.h"

#include <QTest>

namespace talvenor::test {

/// A completed recording of a minute and five seconds on 1 March 2026, 10 o'clock, or earlier.
inline Recording completedRecording(const QString &title, int minutesBefore = 0)
{
    Recording recording;
    recording.title = title;
    recording.date = QDateTime::fromString(QStringLiteral("2026-03-01T10:00:00Z"), Qt::ISODate)
                         .addSecs(-60LL * minutesBefore);
    recording.audioFileName = QStringLiteral("sound.m4a");
    recording.status = RecordingStatus::completed;
    recording.duration = 65;
    return recording;
}

inline Recording withStatus(Recording recording, RecordingStatus status)
{
    recording.status = status;
    return recording;
}

inline Recording withTranscript(Recording recording)
{
    TranscriptSegment segment;
    segment.text = QStringLiteral("words");
    recording.transcriptSegments.append(segment);
    return recording;
}

inline Recording withSummary(Recording recording)
{
    recording.summary = QStringLiteral("short");
    return recording;
}

/// One recording for each line of the table of marks, in its order.
inline QList<Recording> recordingsOfAllMarks()
{
    return {
        withStatus(completedRecording(QStringLiteral("Weekly sync"), 0), RecordingStatus::recording),
        withStatus(completedRecording(QStringLiteral("Interview with Susan"), 60),
                   RecordingStatus::transcribing),
        withStatus(withTranscript(completedRecording(QStringLiteral("Budget 2027"), 1500)),
                   RecordingStatus::summarizing),
        withSummary(
            withTranscript(completedRecording(QStringLiteral("Quarterly planning with everybody"), 3000))),
        withTranscript(completedRecording(QStringLiteral("Design review"), 4500)),
        completedRecording(QStringLiteral("Lunch talk"), 6000),
        withStatus(completedRecording(QStringLiteral("Call from the train"), 7500), RecordingStatus::failed)};
}

/// `count` recordings whose titles tell their places.
inline QList<Recording> numberedRecordings(int count)
{
    QList<Recording> list;
    for (int i = 0; i < count; ++i)
        list.append(completedRecording(QStringLiteral("Meeting %1").arg(i), i));
    return list;
}

/// The sidebar on a view model with these recordings, in a window of its own size.
struct Sidebar
{
    explicit Sidebar(const QList<Recording> &recordings, QSize size = {300, 640})
        : viewModel((fixture.writeList(recordings), fixture.start())), record(viewModel), model(viewModel),
          scene("SidebarView { anchors.fill: parent }", size,
                {{QStringLiteral("record"), QVariant::fromValue(&record)},
                 {QStringLiteral("recordings"), QVariant::fromValue(&model)}}),
          list(scene.item(QStringLiteral("recordingList")))
    {
        // Where the program has it, so that a menu gives the focus back.
        for (QQuickItem *const child : scene.window().contentItem()->childItems()) {
            if (child->inherits("QQuickContentItem"))
                scene.root().setParentItem(child);
        }
    }

    [[nodiscard]] QQuickItem &item(const char *name) const { return scene.item(QString::fromLatin1(name)); }
    [[nodiscard]] QRectF rect(const char *name) const { return RenderedScene::rect(item(name)); }

    /// The item of a row, null if there is none.
    [[nodiscard]] QQuickItem *rowItem(int row) const
    {
        QQuickItem *item = nullptr;
        QMetaObject::invokeMethod(&list, "itemAtIndex", Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, row));
        return item;
    }
    [[nodiscard]] QQuickItem &row(int row) const
    {
        QQuickItem *const item = rowItem(row);
        if (!item)
            qFatal("row %d is not there", row);
        return *item;
    }
    [[nodiscard]] static QQuickItem &part(const QQuickItem &row, const char *name)
    {
        auto *const found = find(row, QString::fromLatin1(name));
        if (!found)
            qFatal("the row has no %s", name);
        return *found;
    }

    /// What is filtered by, as typed by a person.
    void search(const QString &text) const
    {
        item("searchInput").forceActiveFocus(Qt::TabFocusReason);
        scene.type(text);
    }
    /// How far the first row is above the top of the list.
    [[nodiscard]] double scrolled() const
    {
        return list.property("contentY").toDouble() - list.property("originY").toDouble();
    }
    void scrollTo(double y) const
    {
        list.setProperty("contentY", list.property("originY").toDouble() + y);
        settle();
    }
    /// Lets the list lay out its rows.
    void settle() const
    {
        QCoreApplication::processEvents();
        [[maybe_unused]] const QImage picture = scene.grab();
    }

    RecorderFixture fixture;
    RecorderViewModel &viewModel;
    RecordState record;
    RecordingListModel model;
    RenderedScene scene;
    QQuickItem &list;

private:
    static QQuickItem *find(const QQuickItem &from, const QString &name)
    {
        for (QQuickItem *const child : from.childItems()) {
            if (child->objectName() == name)
                return child;
            if (QQuickItem *const found = find(*child, name))
                return found;
        }
        return nullptr;
    }
};

} // namespace talvenor::test
