#include "platform/linux/desktop/LinuxFilePanels.h"

#include "FakePortal.h"
#include "PanelAnswer.h"

#include "support/Await.h"
#include "support/LogCapture.h"

#include <QApplication>
#include <QDBusArgument>
#include <QFileDialog>
#include <QTest>
#include <QWindow>

namespace talvenor {

using test::FakePortal;
using test::PanelAnswer;
using test::waitUntil;
using Behaviour = FakePortal::Behaviour;

class FilePortalTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void anAcceptedPanelGivesTheFile_data();
    void anAcceptedPanelGivesTheFile();
    void theRequestSaysWhatTheCallerWants();
    void theFolderRequestAsksForAFolder();
    void theRequestNamesTheWindowInFront();
    void aCancelledPanelGivesNothing_data();
    void aCancelledPanelGivesNothing();
    void anAnswerWithoutAUsableFileIsOkWithoutAPath_data();
    void anAnswerWithoutAUsableFileIsOkWithoutAPath();
    void aSecondAnswerIsIgnored();
    void whereThePortalFailsTheDialogComes_data();
    void whereThePortalFailsTheDialogComes();
    void aPortalThatDisappearsLeavesTheDialog();
    void withoutAPortalTheDialogComes();
    void anOldPortalIsNotAskedForFolders();

private:
    [[nodiscard]] static QFileDialog *shownDialog();

    // Short, for the portal that hangs; any other answers at once.
    LinuxFilePanels m_panels{std::chrono::seconds(2)};
};

void FilePortalTest::initTestCase()
{
    QVERIFY(QDBusConnection::sessionBus().isConnected());
}

void FilePortalTest::cleanup()
{
    QVERIFY(waitUntil([] { return shownDialog() == nullptr; }));
}

QFileDialog *FilePortalTest::shownDialog()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<QFileDialog *>(widget); dialog != nullptr && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

void FilePortalTest::anAcceptedPanelGivesTheFile_data()
{
    QTest::addColumn<Behaviour>("behaviour");
    QTest::newRow("reply, then answer") << Behaviour::accept;
    QTest::newRow("answer, then reply") << Behaviour::answerFirst;
}

void FilePortalTest::anAcceptedPanelGivesTheFile()
{
    QFETCH(Behaviour, behaviour);
    FakePortal portal;
    portal.behaviour = behaviour;
    portal.results = {
        {QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/a%20b/Gr%C3%BC%C3%9Fe.md")}}};
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QCOMPARE(answer.count(), 0);
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::ok));
    QCOMPARE(answer.path(), std::optional(QStringLiteral("/home/a b/Grüße.md")));
    QVERIFY(shownDialog() == nullptr);
}

void FilePortalTest::theRequestSaysWhatTheCallerWants()
{
    FakePortal portal;
    portal.code = 1;
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("a/b: \"c\".md")}, answer.completion());
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(portal.calls().size(), 1);
    const FakePortal::Call call = portal.calls().first();
    QCOMPARE(call.method, QStringLiteral("SaveFile"));
    QVERIFY(!call.title.isEmpty());
    QCOMPARE(call.options.value(QStringLiteral("current_name")).toString(), QStringLiteral("a/b: \"c\".md"));
    QVERIFY(call.options.value(QStringLiteral("modal")).toBool());
    QVERIFY(!call.options.contains(QStringLiteral("directory")));
    const auto filters = call.options.value(QStringLiteral("filters")).value<QDBusArgument>();
    QCOMPARE(filters.currentSignature(), QStringLiteral("a(sa(us))"));
    QStringList rules;
    filters.beginArray();
    while (!filters.atEnd()) {
        QString name;
        filters.beginStructure();
        filters >> name;
        QVERIFY(!name.isEmpty());
        filters.beginArray();
        while (!filters.atEnd()) {
            uint kind = 9;
            QString pattern;
            filters.beginStructure();
            filters >> kind >> pattern;
            filters.endStructure();
            rules.append(QString::number(kind) + u':' + pattern);
        }
        filters.endArray();
        filters.endStructure();
    }
    filters.endArray();
    QCOMPARE(rules.join(u' '), QStringLiteral("1:text/plain 0:*.md 0:*.txt"));
}

void FilePortalTest::theFolderRequestAsksForAFolder()
{
    FakePortal portal;
    portal.results = {{QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/chosen")}}};
    const PanelAnswer answer;
    m_panels.beginFolderPanel(QStringLiteral("Wähle den Speicherort"), answer.completion());
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.path(), std::optional(QStringLiteral("/home/chosen")));
    const FakePortal::Call call = portal.calls().first();
    QCOMPARE(call.method, QStringLiteral("OpenFile"));
    QCOMPARE(call.title, QStringLiteral("Wähle den Speicherort"));
    QVERIFY(call.options.value(QStringLiteral("directory")).toBool());
    QVERIFY(!call.options.contains(QStringLiteral("current_name")));
}

void FilePortalTest::theRequestNamesTheWindowInFront()
{
    QWindow window;
    window.show();
    window.requestActivate();
    QVERIFY(waitUntil([&] { return QGuiApplication::focusWindow() == &window; }));
    FakePortal portal;
    portal.code = 1;
    const PanelAnswer answer;
    m_panels.beginSavePanel({{}, QStringLiteral("Meeting.md")}, answer.completion());
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(portal.calls().first().parent, QStringLiteral("x11:") + QString::number(window.winId(), 16));
    QVERIFY(!portal.calls().first().options.contains(QStringLiteral("filters")));
}

void FilePortalTest::aCancelledPanelGivesNothing_data()
{
    QTest::addColumn<uint>("code");
    QTest::newRow("by the user") << 1U;
    QTest::newRow("in another way") << 2U;
    QTest::newRow("in a way unheard of") << 77U;
}

void FilePortalTest::aCancelledPanelGivesNothing()
{
    QFETCH(uint, code);
    FakePortal portal;
    portal.code = code;
    portal.results = {{QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/x")}}};
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::cancel));
    QVERIFY(!answer.path());
    QVERIFY(shownDialog() == nullptr);
}

void FilePortalTest::anAnswerWithoutAUsableFileIsOkWithoutAPath_data()
{
    QTest::addColumn<QVariantMap>("results");
    const QString uris = QStringLiteral("uris");
    QTest::newRow("nothing") << QVariantMap();
    QTest::newRow("an empty list") << QVariantMap{{uris, QStringList()}};
    QTest::newRow("another type") << QVariantMap{{uris, 5}};
    QTest::newRow("another scheme") << QVariantMap{
        {uris, QStringList{QStringLiteral("https://a.invalid/x")}}};
    QTest::newRow("no address") << QVariantMap{{uris, QStringList{QStringLiteral("::")}}};
}

void FilePortalTest::anAnswerWithoutAUsableFileIsOkWithoutAPath()
{
    QFETCH(QVariantMap, results);
    FakePortal portal;
    portal.results = results;
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::ok));
    QVERIFY(!answer.path());
}

void FilePortalTest::aSecondAnswerIsIgnored()
{
    FakePortal portal;
    portal.behaviour = Behaviour::wait;
    const PanelAnswer answer;
    const PanelAnswer other;
    m_panels.beginSavePanel({{}, QStringLiteral("one.md")}, answer.completion());
    m_panels.beginSavePanel({{}, QStringLiteral("two.md")}, other.completion());
    QVERIFY(waitUntil([&] { return portal.calls().size() == 2; }));
    QCOMPARE(answer.count() + other.count(), 0);
    portal.results = {{QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/one.md")}}};
    portal.respond(portal.calls()[0].requestPath);
    portal.respond(portal.calls()[0].requestPath);
    portal.results = {{QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/two.md")}}};
    portal.respond(portal.calls()[1].requestPath);
    QVERIFY(waitUntil([&] { return other.count() > 0; }));
    QCOMPARE(answer.count(), 1);
    QCOMPARE(answer.path(), std::optional(QStringLiteral("/home/one.md")));
    QCOMPARE(other.path(), std::optional(QStringLiteral("/home/two.md")));
}

void FilePortalTest::whereThePortalFailsTheDialogComes_data()
{
    QTest::addColumn<Behaviour>("behaviour");
    QTest::newRow("refuses") << Behaviour::refuse;
    QTest::newRow("hangs") << Behaviour::hang;
    QTest::newRow("has no file chooser") << Behaviour::noFileChooser;
}

void FilePortalTest::whereThePortalFailsTheDialogComes()
{
    QFETCH(Behaviour, behaviour);
    FakePortal portal;
    portal.behaviour = behaviour;
    test::LogCapture log;
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("a/b.md")}, answer.completion());
    QVERIFY(waitUntil([] { return shownDialog() != nullptr; }));
    QCOMPARE(log.texts(QStringLiteral("com.talvenor.app.Platform")).size(), 1);
    if (behaviour == Behaviour::hang) {
        // A late panel would be a second one.
        QVERIFY(waitUntil([&] { return !portal.closed().isEmpty(); }));
        QCOMPARE(portal.closed(), QStringList{portal.calls().first().requestPath});
        portal.respond(portal.calls().first().requestPath);
    }
    QCOMPARE(answer.count(), 0);
    shownDialog()->reject();
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::cancel));
    QVERIFY(waitUntil([] { return shownDialog() == nullptr; }));
    QCOMPARE(answer.count(), 1);
}

void FilePortalTest::aPortalThatDisappearsLeavesTheDialog()
{
    FakePortal portal;
    portal.behaviour = Behaviour::wait;
    const PanelAnswer answer;
    m_panels.beginFolderPanel(QStringLiteral("Where to?"), answer.completion());
    QVERIFY(waitUntil([&] { return portal.calls().size() == 1; }));
    portal.disappear();
    QVERIFY(waitUntil([] { return shownDialog() != nullptr; }));
    QCOMPARE(answer.count(), 0);
    QCOMPARE(shownDialog()->windowTitle(), QStringLiteral("Where to?"));
    shownDialog()->reject();
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
}

void FilePortalTest::withoutAPortalTheDialogComes()
{
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QVERIFY(waitUntil([] { return shownDialog() != nullptr; }));
    shownDialog()->reject();
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
}

void FilePortalTest::anOldPortalIsNotAskedForFolders()
{
    FakePortal portal;
    portal.version = 2;
    const PanelAnswer folder;
    m_panels.beginFolderPanel(QStringLiteral("Where to?"), folder.completion());
    QVERIFY(waitUntil([] { return shownDialog() != nullptr; }));
    QVERIFY(portal.calls().isEmpty());
    shownDialog()->reject();
    QVERIFY(waitUntil([&] { return folder.count() > 0; }));

    // Files it can do; so old a one may also answer on a path of its own choice.
    portal.behaviour = Behaviour::ownPath;
    portal.results = {{QStringLiteral("uris"), QStringList{QStringLiteral("file:///home/x.md")}}};
    const PanelAnswer file;
    m_panels.beginSavePanel({{}, QStringLiteral("x.md")}, file.completion());
    QVERIFY(waitUntil([&] {
        // Until the reply is there, nobody listens on that path.
        if (!portal.calls().isEmpty())
            portal.respond(portal.calls().first().requestPath);
        return file.count() > 0;
    }));
    QCOMPARE(file.path(), std::optional(QStringLiteral("/home/x.md")));
}

} // namespace talvenor

QTEST_MAIN(talvenor::FilePortalTest)
#include "FilePortalTest.moc"
