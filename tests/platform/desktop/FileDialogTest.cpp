#include "platform/linux/desktop/LinuxDesktop.h"
#include "platform/linux/desktop/LinuxFilePanels.h"

#include "PanelAnswer.h"

#include "support/Await.h"

#include <QApplication>
#include <QComboBox>
#include <QDBusConnection>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

namespace talvenor {

using test::PanelAnswer;
using test::waitUntil;

/// The dialogs that stand in for the portal on a desktop without a session bus: real ones, operated through
/// their widgets.
class FileDialogTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { m_folder = std::make_unique<QTemporaryDir>(); }
    void cleanup();

    void aPathThatIsTypedIsTheAnswer();
    void theSuggestedNameIsShownAsItStands_data();
    void theSuggestedNameIsShownAsItStands();
    void theSuggestedNameIsUsedInTheFolderShown();
    void noSuffixIsAddedToWhatIsTyped();
    void markdownFilesAreOffered();
    void anExistingFileIsReplacedOnlyWhenConfirmed();
    void closingIsCancelling();
    void aFolderIsChosen();
    void theFolderPanelSaysWhatFor();
    void thePanelBelongsToTheWindowInFrontAndDoesNotBlock();
    void severalPanelsAnswerOnTheirOwn();
    void aPanelOfAnEndedObjectClosesWithoutAnAnswer();
    void thePlatformHasFilePanels();

private:
    [[nodiscard]] static QList<QFileDialog *> dialogs();
    [[nodiscard]] static QFileDialog *shownDialog();
    [[nodiscard]] static QLineEdit *nameField(const QFileDialog *dialog);
    static void type(QFileDialog *dialog, const QString &text);
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    LinuxFilePanels m_panels;
};

void FileDialogTest::initTestCase()
{
    QVERIFY(!QDBusConnection::sessionBus().isConnected());
}

void FileDialogTest::cleanup()
{
    QVERIFY(waitUntil([] { return dialogs().isEmpty(); }));
}

QList<QFileDialog *> FileDialogTest::dialogs()
{
    QList<QFileDialog *> result;
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<QFileDialog *>(widget))
            result.append(dialog);
    }
    return result;
}

QFileDialog *FileDialogTest::shownDialog()
{
    const auto isShown = [] { return dialogs().size() == 1 && dialogs().first()->isVisible(); };
    return waitUntil(isShown) && QTest::qWaitForWindowExposed(dialogs().first()) ? dialogs().first()
                                                                                 : nullptr;
}

QLineEdit *FileDialogTest::nameField(const QFileDialog *dialog)
{
    return dialog->findChild<QLineEdit *>(QStringLiteral("fileNameEdit"));
}

void FileDialogTest::type(QFileDialog *dialog, const QString &text)
{
    nameField(dialog)->selectAll();
    QTest::keyClicks(nameField(dialog), text);
    QTest::keyClick(nameField(dialog), Qt::Key_Return);
}

void FileDialogTest::aPathThatIsTypedIsTheAnswer()
{
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(answer.count(), 0);
    type(dialog, path(QStringLiteral("typed.md")));
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::ok));
    QCOMPARE(answer.path(), std::optional(path(QStringLiteral("typed.md"))));
    QVERIFY(waitUntil([] { return dialogs().isEmpty(); }));
    QCOMPARE(answer.count(), 1);
    QVERIFY(!QFile::exists(path(QStringLiteral("typed.md"))));
}

void FileDialogTest::theSuggestedNameIsShownAsItStands_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"Meeting.md", "a/b.md", "/etc/passwd.md", "../../up.md", ".md", "", "C:\\x.md",
                             "Straße \"5\" – %1 & 😀.md", "~.md", "//x.md"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void FileDialogTest::theSuggestedNameIsShownAsItStands()
{
    QFETCH(QString, name);
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, name}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(nameField(dialog)->text(), name);
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
    const QString folder = dialog->directory().absolutePath();
    QVERIFY(folder != u"/etc" && folder != u"/" && !folder.endsWith(u"/a"));
    dialog->reject();
    QVERIFY(waitUntil([&] { return answer.count() == 1; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::cancel));
}

void FileDialogTest::theSuggestedNameIsUsedInTheFolderShown()
{
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    dialog->setDirectory(m_folder->path());
    nameField(dialog)->setText(QStringLiteral("Meeting.md"));
    QTest::keyClick(nameField(dialog), Qt::Key_Return);
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.path(), std::optional(path(QStringLiteral("Meeting.md"))));

    // The next panel opens where the last one ended.
    const PanelAnswer next;
    m_panels.beginSavePanel({{}, QStringLiteral("Next.md")}, next.completion());
    QVERIFY(waitUntil([] { return dialogs().size() == 1; }));
    dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->directory().absolutePath(), QDir(m_folder->path()).absolutePath());
    QTest::keyClick(nameField(dialog), Qt::Key_Return);
    QVERIFY(waitUntil([&] { return next.count() > 0; }));
    QCOMPARE(next.path(), std::optional(path(QStringLiteral("Next.md"))));
}

void FileDialogTest::noSuffixIsAddedToWhatIsTyped()
{
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    type(dialog, path(QStringLiteral("plain")));
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.path(), std::optional(path(QStringLiteral("plain"))));
}

void FileDialogTest::markdownFilesAreOffered()
{
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->nameFilters().size(), 1);
    QVERIFY2(dialog->nameFilters().first().endsWith(u" (*.md *.txt)"),
             qPrintable(dialog->nameFilters().first()));
    dialog->reject();
}

void FileDialogTest::anExistingFileIsReplacedOnlyWhenConfirmed()
{
    const QString existing = path(QStringLiteral("existing.md"));
    QFile file(existing);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);

    // The question runs an event loop of its own, inside which it is answered.
    int questions = 0;
    const auto answerWith = [&questions](QMessageBox::StandardButton button) {
        auto *timer = new QTimer(qApp);
        QObject::connect(timer, &QTimer::timeout, timer, [timer, button, &questions] {
            if (auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget())) {
                ++questions;
                timer->deleteLater();
                box->button(button)->click();
            }
        });
        timer->start(10);
    };
    answerWith(QMessageBox::No);
    type(dialog, existing);
    QCOMPARE(questions, 1);
    QCOMPARE(answer.count(), 0);
    QVERIFY(dialog->isVisible());
    answerWith(QMessageBox::Yes);
    type(dialog, existing);
    QCOMPARE(questions, 2);
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.path(), std::optional(existing));
}

void FileDialogTest::closingIsCancelling()
{
    for (int way = 0; way < 2; ++way) {
        const PanelAnswer answer;
        m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")},
                                answer.completion());
        QFileDialog *dialog = shownDialog();
        QVERIFY(dialog != nullptr);
        if (way == 0)
            QTest::keyClick(dialog, Qt::Key_Escape);
        else
            dialog->close();
        QVERIFY(waitUntil([&] { return answer.count() > 0; }));
        QCOMPARE(answer.response(), std::optional(PanelResponse::cancel));
        QVERIFY(!answer.path());
        QVERIFY(waitUntil([] { return dialogs().isEmpty(); }));
        QCOMPARE(answer.count(), 1);
    }
}

void FileDialogTest::aFolderIsChosen()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("chosen")));
    const PanelAnswer answer;
    m_panels.beginFolderPanel(QStringLiteral("Where to?"), answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->fileMode(), QFileDialog::Directory);
    QVERIFY(dialog->testOption(QFileDialog::ShowDirsOnly));
    QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptOpen);
    type(dialog, path(QStringLiteral("chosen")));
    QVERIFY(waitUntil([&] { return answer.count() > 0; }));
    QCOMPARE(answer.response(), std::optional(PanelResponse::ok));
    QCOMPARE(answer.path(), std::optional(path(QStringLiteral("chosen"))));
}

void FileDialogTest::theFolderPanelSaysWhatFor()
{
    const PanelAnswer answer;
    m_panels.beginFolderPanel(QStringLiteral("Wähle den Speicherort"), answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Wähle den Speicherort"));
    dialog->reject();
    QVERIFY(waitUntil([&] { return answer.response() == PanelResponse::cancel; }));
}

void FileDialogTest::thePanelBelongsToTheWindowInFrontAndDoesNotBlock()
{
    QWindow window;
    window.resize(400, 300);
    window.show();
    window.requestActivate();
    QVERIFY(waitUntil([&] { return QGuiApplication::focusWindow() == &window; }));
    const PanelAnswer answer;
    m_panels.beginSavePanel({{ContentType::plainText}, QStringLiteral("Meeting.md")}, answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    QCOMPARE(dialog->windowModality(), Qt::WindowModal);
    QCOMPARE(dialog->windowHandle()->transientParent(), &window);
    dialog->reject();
    QVERIFY(waitUntil([&] { return answer.count() == 1; }));
}

void FileDialogTest::severalPanelsAnswerOnTheirOwn()
{
    const PanelAnswer first;
    const PanelAnswer second;
    m_panels.beginSavePanel({{}, QStringLiteral("first.md")}, first.completion());
    m_panels.beginSavePanel({{}, QStringLiteral("second.md")}, second.completion());
    QVERIFY(waitUntil([] { return dialogs().size() == 2; }));
    for (QFileDialog *dialog : dialogs()) {
        if (nameField(dialog)->text() == u"second.md")
            dialog->reject();
    }
    QVERIFY(waitUntil([&] { return second.count() == 1; }));
    QCOMPARE(first.count(), 0);
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    type(dialog, path(QStringLiteral("first.md")));
    QVERIFY(waitUntil([&] { return first.count() == 1; }));
    QCOMPARE(first.path(), std::optional(path(QStringLiteral("first.md"))));
    QCOMPARE(second.count(), 1);
}

void FileDialogTest::aPanelOfAnEndedObjectClosesWithoutAnAnswer()
{
    const PanelAnswer answer;
    {
        LinuxFilePanels panels;
        panels.beginSavePanel({{}, QStringLiteral("Meeting.md")}, answer.completion());
        QVERIFY(shownDialog() != nullptr);
    }
    QVERIFY(dialogs().isEmpty());
    QCOMPARE(answer.count(), 0);
}

void FileDialogTest::thePlatformHasFilePanels()
{
    Platform platform;
    installLinuxDesktop(platform);
    QVERIFY(platform.filePanels != nullptr);
    const PanelAnswer answer;
    platform.filePanels->beginFolderPanel(QStringLiteral("Where to?"), answer.completion());
    QFileDialog *dialog = shownDialog();
    QVERIFY(dialog != nullptr);
    dialog->reject();
    QVERIFY(waitUntil([&] { return answer.count() == 1; }));
}

} // namespace talvenor

QTEST_MAIN(talvenor::FileDialogTest)
#include "FileDialogTest.moc"
